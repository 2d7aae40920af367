#include "app/UnseenOutput.h"

#include "editing/window/VXWindowController.h"
#include "platform/documents/DocumentController.h"
#include "scripting/panel/VXMacroWindowController.h"

#include <QTimer>
#include <QWidget>
#include <utility>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype kShownCharacters = 120;
constexpr qsizetype kKeptCharacters = 4'000; // lines come in pieces

/// \a line for a place where a long one would push everything else out of the window.
QString shortened(QStringView line)
{
    const QStringView trimmed = line.trimmed();
    return trimmed.size() > kShownCharacters ? trimmed.first(kShownCharacters).toString() + u'…'
                                             : trimmed.toString();
}

QString firstLineIn(QStringView text)
{
    const QStringView trimmed = text.trimmed();
    const qsizetype end = trimmed.indexOf(u'\n');
    return shortened(end < 0 ? trimmed : trimmed.first(end));
}

QString lastLineIn(QStringView text)
{
    const QStringView trimmed = text.trimmed();
    return shortened(trimmed.sliced(trimmed.lastIndexOf(u'\n') + 1));
}

} // namespace

UnseenOutput::UnseenOutput(VXMacroWindowController &panel, QObject *parent) : QObject(parent), m_panel(panel)
{
    connect(&panel, &VXMacroWindowController::wrote, this, &UnseenOutput::noteOutput);
    connect(&panel, &VXMacroWindowController::wroteError, this, &UnseenOutput::noteError);
}

void UnseenOutput::noteOutput(const QString &text)
{
    if (m_panel.isReallyVisible())
        return;
    if (m_printed.size() < kKeptCharacters)
        m_printed += QStringView(text).first(qMin(text.size(), kKeptCharacters));
    tellLater();
}

void UnseenOutput::noteError(const QString &text)
{
    if (m_panel.isReallyVisible())
        return;
    m_error = (m_error + text).right(kKeptCharacters);
    tellLater();
}

void UnseenOutput::tellLater()
{
    // All that a run writes comes before the next turn of the event loop.
    if (!std::exchange(m_isPending, true))
        QTimer::singleShot(0, this, &UnseenOutput::tell);
}

void UnseenOutput::tell()
{
    m_isPending = false;
    const QString printed = firstLineIn(std::exchange(m_printed, {}));
    const QString error = lastLineIn(std::exchange(m_error, {}));
    const QList<Document *> &documents = DocumentController::shared().documentList();
    auto *window = documents.isEmpty()
        ? nullptr
        : qobject_cast<VXWindowController *>(documents.front()->windowController());
    if (!window || (printed.isEmpty() && error.isEmpty()))
        return;
    const QString text = error.isEmpty()
        ? tr("A script printed “%1”. All of it stands in Window > Macro Panel.").arg(printed)
        : tr("A script failed: %1\nWhere, shows Window > Macro Panel.").arg(error);
    window->showMessage(text);
}

} // namespace runebook
