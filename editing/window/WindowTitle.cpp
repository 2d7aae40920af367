#include "editing/window/WindowTitle.h"

#include "document/VXDocument.h"
#include "editing/records/RSRTVArrayController.h"
#include "platform/PlainLabel.h"

#include <QLabel>
#include <QLocale>
#include <QStatusBar>

namespace runebook {

using namespace Qt::StringLiterals;

WindowTitle::WindowTitle(const WindowParts &parts, QObject *parent)
    : QObject(parent),
      m_parts(parts),
      m_subtitleLabel(plainLabel({}, &parts.window)),
      m_countLabel(plainLabel({}, &parts.window))
{
}

void WindowTitle::addTo(QStatusBar &bar)
{
    bar.addWidget(m_subtitleLabel);
    bar.addPermanentWidget(m_countLabel);
}

void WindowTitle::synchronize()
{
    const VXDocument &document = m_parts.document;
    m_title = titleForDisplayName(document.displayName());
    // "[*]" in a file's name would be taken for the place of the mark of unsaved changes.
    m_parts.window.setWindowTitle(document.windowTitle().replace("[*]"_L1, "[*][*]"_L1) + "[*]"_L1);
    m_parts.window.setWindowModified(document.isDocumentEdited());
    m_parts.window.setWindowFilePath(document.fileURL());
}

QString WindowTitle::countText(const QString &shown, const QString &total) const
{
    const QString text = shown == total ? tr("%1 infos").arg(shown) : tr("%1/%2 infos").arg(shown, total);
    return m_parts.document.isDocumentEdited() ? text + tr(" - Edited") : text;
}

QString WindowTitle::titleForDisplayName(const QString &displayName)
{
    const QString text = countText(QString::number(m_parts.list.countOfArrangedObjects()),
                                   QString::number(m_parts.document.countOfInfos()));
    if (text != m_subtitle) {
        m_subtitle = text;
        showSubtitle();
        Q_EMIT subtitleChanged();
    }
    return displayName;
}

/// The subtitle for people, who want to read large numbers.
void WindowTitle::showSubtitle()
{
    const auto number = [](qsizetype count) { return QLocale().toString(static_cast<qlonglong>(count)); };
    m_subtitleLabel->setText(
        countText(number(m_parts.list.countOfArrangedObjects()), number(m_parts.document.countOfInfos())));
}

void WindowTitle::showSelectedCount()
{
    const qsizetype selected = m_parts.list.selectedCount();
    m_countLabel->setText(selected == 0
                              ? QString()
                              : tr("%1 selected").arg(QLocale().toString(static_cast<qlonglong>(selected))));
}

void WindowTitle::showProgress(double done)
{
    m_subtitleLabel->setText(tr("Searching… %1 % (Esc stops)").arg(static_cast<int>(done * 100)));
}

} // namespace runebook
