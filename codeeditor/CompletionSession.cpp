#include "codeeditor/CompletionSession.h"

#include "codeeditor/CompletionPopup.h"

#include <QKeyEvent>
#include <algorithm>

namespace runebook {

CompletionSession::CompletionSession(QWidget *editor) : QObject(editor), m_editor(editor)
{
    editor->installEventFilter(this);
}

CompletionSession::~CompletionSession() = default;

Completion CompletionSession::current() const
{
    return m_popup ? m_offered.value(m_popup->current()) : Completion();
}

void CompletionSession::offer(const CompletionList &offered, const QString &partial, const QRect &caret,
                              Origin origin, int current)
{
    if (offered.isEmpty()) {
        end();
        return;
    }
    // What was chosen stays chosen while it is among what fits.
    const QString before = m_isChosen ? this->current().text : QString();
    const auto kept = std::find_if(offered.begin(), offered.end(),
                                   [&before](const Completion &one) { return one.text == before; });
    const bool isKept = !before.isNull() && kept != offered.end();
    m_isChosen = origin == Origin::OnRequest || isKept;
    m_offered = offered;
    m_partial = partial;
    if (!m_popup)
        open();
    const int row = isKept ? int(kept - offered.begin()) : std::clamp(current, 0, int(offered.size()) - 1);
    m_popup->popUp(m_offered, row, caret);
    m_popup->setChosen(m_isChosen);
    describe(row);
}

void CompletionSession::open()
{
    m_popup = new CompletionPopup(m_editor);
    connect(m_popup, &CompletionPopup::currentChanged, this, &CompletionSession::describe);
    connect(m_popup, &CompletionPopup::clicked, this, [this](int row) {
        m_popup->setCurrent(row);
        acceptCurrent();
    });
    m_window = m_editor->window();
    if (m_window != m_editor)
        m_window->installEventFilter(this);
}

void CompletionSession::end()
{
    if (!m_popup)
        return;
    if (m_window && m_window != m_editor)
        m_window->removeEventFilter(this);
    m_popup->disconnect(this);
    m_popup->hide();
    m_popup->deleteLater(); // it may be the one that told of a click
    m_popup = nullptr;
    m_offered.clear();
    m_isChosen = false;
}

void CompletionSession::choose(int row)
{
    m_isChosen = true;
    m_popup->setChosen(true);
    m_popup->setCurrent(row);
}

void CompletionSession::acceptCurrent()
{
    const QString text = current().text;
    end();
    Q_EMIT accepted(text);
}

void CompletionSession::describe(int row)
{
    if (!m_popup || row < 0 || row >= m_offered.size())
        return;
    Completion &one = m_offered[row];
    if (m_describe && one.help.isEmpty())
        m_describe(one);
    m_popup->setDescription(one.signature, one.help);
}

bool CompletionSession::handleKey(const QKeyEvent &event)
{
    if (!m_popup || (event.modifiers() & ~Qt::KeypadModifier) != Qt::NoModifier)
        return false;
    const int last = int(m_offered.size()) - 1;
    const int row = m_popup->current();
    switch (event.key()) {
    case Qt::Key_Up:
        choose(row > 0 ? row - 1 : last);
        return true;
    case Qt::Key_Down:
        choose(row < last ? row + 1 : 0);
        return true;
    case Qt::Key_PageUp:
        choose(std::max(0, row - CompletionPopup::kVisibleRows + 1));
        return true;
    case Qt::Key_PageDown:
        choose(std::min(last, row + CompletionPopup::kVisibleRows - 1));
        return true;
    case Qt::Key_Tab:
        acceptCurrent();
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!m_isChosen || current().text == m_partial) {
            end();
            return false;
        }
        acceptCurrent();
        return true;
    case Qt::Key_Escape:
        end();
        return true;
    default:
        return false;
    }
}

bool CompletionSession::eventFilter(QObject *watched, QEvent *event)
{
    if (!m_popup)
        return false;
    switch (event->type()) {
    case QEvent::FocusOut:
    case QEvent::Hide:
    case QEvent::ParentChange:
    case QEvent::Close:
        end();
        break;
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::WindowStateChange:
    case QEvent::WindowDeactivate:
        if (watched == m_window)
            end();
        break;
    default:
        break;
    }
    return false;
}

} // namespace runebook
