#include "editing/ChangedOnDisk.h"

#include "editing/CompareDocuments.h"
#include "platform/DocumentPanels.h"
#include "platform/PlainText.h"
#include "platform/Recovery.h"
#include "platform/UserDefaults.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

const QString kReload = u"VXReloadChangedFiles"_s;

QString textFor(FileWatch::Change change, bool isEdited)
{
    QString text;
    switch (change) {
    case FileWatch::Change::None:
        return {};
    case FileWatch::Change::Removed:
        return ChangedOnDisk::tr("Another program has removed the file. What you see is only here now.");
    case FileWatch::Change::Emptied:
        text = ChangedOnDisk::tr("Another program has emptied the file.");
        break;
    case FileWatch::Change::Replaced:
        text = ChangedOnDisk::tr("Another program has put a new file in the place of this one.");
        break;
    case FileWatch::Change::Changed:
        text = ChangedOnDisk::tr("Another program has changed the file.");
        break;
    }
    if (isEdited)
        text += u' ' + ChangedOnDisk::tr("Reloading gives up what you have changed here.");
    return text;
}

} // namespace

ChangedOnDisk::ChangedOnDisk(VXDocument &document, QWidget *parent)
    : QFrame(parent), m_document(document), m_label(plainLabel({}, this))
{
    setFrameShape(StyledPanel);
    setAutoFillBackground(true);
    setBackgroundRole(QPalette::AlternateBase);
    setAccessibleName(tr("The file was changed by another program"));
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
    connect(&document.fileWatch(), &FileWatch::changed, this, &ChangedOnDisk::fileHasChanged);
    connect(&document, &Document::saved, this, &QWidget::hide);
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
    const bool isGone = change == FileWatch::Change::Removed || change == FileWatch::Change::Emptied;
    if (change == FileWatch::Change::None)
        hide();
    else if (!isGone && !m_document.isDocumentEdited() && UserDefaults::standard().boolForKey(kReload))
        reload();
    else
        showChoice(change);
}

void ChangedOnDisk::showChoice(FileWatch::Change change)
{
    m_label->setText(textFor(change, m_document.isDocumentEdited()));
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
    if (m_document.revertToSaved(&error)) {
        hide();
        Q_EMIT remarked(tr("Another program has changed the file; it was read again."));
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
