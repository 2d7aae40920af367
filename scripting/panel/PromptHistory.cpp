#include "scripting/panel/PromptHistory.h"

#include "scripting/panel/PanelSettings.h"

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kMostLines = 200;
constexpr qsizetype kLongestLine = 10'000;

} // namespace

PromptHistory::PromptHistory()
{
    for (const QVariant &line : Settings::kPromptHistory.value()) {
        if (line.typeId() == QMetaType::QString)
            m_lines << line.toString();
    }
    m_lines = m_lines.mid(std::max<qsizetype>(0, m_lines.size() - kMostLines));
    m_edited = m_lines + QStringList {QString()};
    m_place = m_lines.size();
}

void PromptHistory::add(const QString &line)
{
    if (!line.isEmpty() && line.size() <= kLongestLine && (m_lines.isEmpty() || m_lines.last() != line)) {
        m_lines << line;
        if (m_lines.size() > kMostLines)
            m_lines.removeFirst();
        Settings::kPromptHistory.set(QVariantList(m_lines.cbegin(), m_lines.cend()));
    }
    m_edited = m_lines + QStringList {QString()};
    m_place = m_lines.size();
}

QString PromptHistory::walk(int step, const QString &shown)
{
    const qsizetype place = m_place + step;
    if (place < 0 || place >= m_edited.size())
        return {};
    m_edited[m_place] = shown;
    m_place = place;
    // Not null, which says that there is none.
    return m_edited[place].isNull() ? u""_s : m_edited[place];
}

} // namespace runebook
