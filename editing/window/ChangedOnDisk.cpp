#include "editing/window/ChangedOnDisk.h"

#include "editing/compare/CompareDocuments.h"
#include "editing/window/WindowSettings.h"
#include "platform/PlainLabel.h"
#include "platform/documents/DocumentPanels.h"
#include "platform/documents/Recovery.h"

#include <QHBoxLayout>
#include <QJsonArray>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <chrono>

namespace runebook {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr int kStillWritten = 2; // of the domain "ChangedOnDiskError"

QString textFor(FileWatch::Change change, bool isEdited)
{
    QString text;
    switch (change) {
    case FileWatch::Change::None:
        return {};
    case FileWatch::Change::Removed:
        return ChangedOnDisk::tr(
            "Another program deleted this file. What it held is now only in this window.");
    case FileWatch::Change::Emptied:
        text = ChangedOnDisk::tr("Another program emptied this file.");
        break;
    case FileWatch::Change::Replaced:
        text = ChangedOnDisk::tr("Another program replaced this file.");
        break;
    case FileWatch::Change::Changed:
        text = ChangedOnDisk::tr("Another program saved this file.");
        break;
    }
    if (isEdited)
        text += u' ' + ChangedOnDisk::tr("Your changes are not in it. Undo brings them back after a reload.");
    return text;
}

} // namespace

ChangedOnDisk::ChangedOnDisk(VXDocument &document, QWidget *parent)
    : QFrame(parent), m_document(document), m_label(plainLabel({}, this))
{
    setFrameShape(StyledPanel);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::AlternateBase);
    setAccessibleName(tr("Another program changed this file"));
    m_label->setWordWrap(true);
    auto *icon = new QLabel(this);
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(18));
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(10, 4, 6, 4);
    layout->addWidget(icon);
    layout->addWidget(m_label, 1);
    m_compare = addButton(tr("Co&mpare"), &ChangedOnDisk::compare);
    m_keep = addButton(tr("&Keep Mine"), &ChangedOnDisk::keepMine);
    m_reload = addButton(tr("&Reload"), &ChangedOnDisk::reload);
    m_save = addButton(tr("Save Aga&in"), &ChangedOnDisk::saveAgain);
    hide();
    registerDefaults();
    m_quiet.setSingleShot(true);
    m_quiet.setInterval(1s);
    connect(&m_quiet, &QTimer::timeout, this, &ChangedOnDisk::reloadWhenQuiet);
    connect(&document.fileWatch(), &FileWatch::changed, this, &ChangedOnDisk::fileHasChanged);
    connect(&document, &Document::saved, this, &QWidget::hide);
}

void ChangedOnDisk::registerDefaults()
{
    Settings::kReloadsChangedFiles.registerFallback();
}

QPushButton *ChangedOnDisk::addButton(const QString &text, void (ChangedOnDisk::*answer)())
{
    auto *button = new QPushButton(text, this);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, answer);
    layout()->addWidget(button);
    return button;
}

QString ChangedOnDisk::text() const
{
    return m_label->text();
}

void ChangedOnDisk::fileHasChanged(FileWatch::Change change)
{
    // What is being typed has no place in another version, so it counts as an edit here.
    const bool isGone = change == FileWatch::Change::Removed || change == FileWatch::Change::Emptied;
    m_quiet.stop();
    if (change == FileWatch::Change::None)
        hide();
    else if (isGone || m_document.isDocumentEdited() || !m_document.pendingTexts().isEmpty()
             || !Settings::kReloadsChangedFiles.value())
        showChoice(change);
    else
        m_quiet.start();
}

void ChangedOnDisk::reloadWhenQuiet()
{
    const FileWatch::Change change = m_document.fileWatch().check();
    if (m_quiet.isActive() || change == FileWatch::Change::None)
        return;
    // What is being typed is work as well.
    if (m_document.hasUnsavedWork()) {
        showChoice(change);
        return;
    }
    Error error;
    if (m_document.reload(Document::Reload::IfSound, &error))
        noteReloaded();
    else if (error.domain == "ChangedOnDiskError"_L1 && error.code == kStillWritten)
        m_quiet.start();
    else
        showChoice(change, error.failureReason);
}

void ChangedOnDisk::noteReloaded()
{
    hide();
    Q_EMIT remarked(
        tr("Another program saved this file, and it was read again. Undo brings back what was here."));
}

void ChangedOnDisk::showChoice(FileWatch::Change change, const QString &reason)
{
    QString text = textFor(change, m_document.isDocumentEdited());
    if (!reason.isEmpty())
        text += u' ' + reason;
    m_label->setText(text);
    m_label->setAccessibleName(m_label->text());
    const bool isRemoved = change == FileWatch::Change::Removed;
    for (QPushButton *button : {m_reload, m_keep, m_compare})
        button->setVisible(!isRemoved);
    m_save->setVisible(isRemoved);
    show();
}

void ChangedOnDisk::keepMine()
{
    m_document.keepMine();
    hide();
}

void ChangedOnDisk::reload()
{
    Error error;
    m_document.commitEditing(); // so that undoing brings it back
    if (m_document.reload(Document::Reload::Always, &error)) {
        noteReloaded();
    } else {
        showChoice(m_document.fileWatch().change());
        Q_EMIT remarked(error.text());
    }
}

void ChangedOnDisk::compare()
{
    Error error;
    auto *theirs = qobject_cast<VXDocument *>(
        Recovery::openCopy(m_document.fileURL(), m_document.fileType(),
                           tr("%1 (on disk)").arg(m_document.displayName()), &error));
    if (theirs)
        compareDocuments(m_document, *theirs, {theirs});
    else
        Q_EMIT remarked(error.text());
}

void ChangedOnDisk::saveAgain()
{
    DocumentPanels::save(m_document, window());
}

} // namespace runebook
