#include "scripting/panel/EscapeFilter.h"

namespace runebook {

namespace {

constexpr QChar kEscape(0x1b);
constexpr QChar kBell(0x07);

bool isIn(QChar character, char16_t first, char16_t last)
{
    return character >= first && character <= last;
}

} // namespace

QString EscapeFilter::filtered(const QString &text)
{
    if (m_state == State::Text && !text.contains(kEscape))
        return text;
    QString rest;
    rest.reserve(text.size());
    for (const QChar character : text) {
        if (isText(character))
            rest += character;
    }
    return rest;
}

bool EscapeFilter::isText(QChar character)
{
    switch (m_state) {
    case State::Text:
        if (character != kEscape)
            return true;
        m_state = State::Escape;
        return false;
    case State::Escape:
        m_state = character == u'[' ? State::Control
            : character == u']' || character == u'P' || character == u'^' || character == u'_'
            ? State::Command
            : isIn(character, 0x20, 0x2f) ? State::Escape // one more before the final one
                                          : State::Text;
        return false;
    case State::Control:
        // A line break cannot belong to it: it was none, and the line is text.
        if (character == u'\n') {
            m_state = State::Text;
            return true;
        }
        if (!isIn(character, 0x20, 0x3f))
            m_state = State::Text;
        return false;
    case State::Command:
        if (character == kBell)
            m_state = State::Text;
        else if (character == kEscape)
            m_state = State::CommandEscape;
        return false;
    case State::CommandEscape:
        m_state = character == u'\\' ? State::Text : State::Command;
        return false;
    }
    return true;
}

} // namespace runebook
