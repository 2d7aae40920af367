#include "platform/documents/LossSheet.h"

#include "platform/PlainLabel.h"
#include "platform/PlainText.h"
#include "platform/TurningWindows.h"

#include <QCoreApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace runebook::LossSheet {

using namespace Qt::StringLiterals;

namespace {

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(LossSheet)
};

enum Answer { Cancel, SaveAnyway, Fix, GoTo };

QString headline(const QString &name, const SavingLosses &losses)
{
    return losses.takingOthers > 0
        ? Texts::tr("“%1” cannot be saved: values in it would take other records with them.").arg(name)
        : Texts::tr("Saving “%1” does not keep all values.").arg(name);
}

QString explanation(const SavingLosses &losses)
{
    const QString count =
        Texts::tr("Records concerned: %1.").arg(QLocale().toString(static_cast<qlonglong>(losses.count)));
    if (!losses.isFixable)
        return count + u' '
            + Texts::tr("“Save Anyway” keeps a copy of the file as it is now. Saved as glyph data, the "
                        "document keeps what a table has no place for.");
    return count + u' '
        + (losses.takingOthers > 0
               ? Texts::tr(
                   "“Fix” writes the marks of comments as “<! --” and “-- >”, and other values in the form "
                   "that a file keeps; it can be undone.")
               : Texts::tr(
                   "“Fix All” puts them into the form that a file keeps, where nothing has to be decided; "
                   "it can be undone. “Save Anyway” keeps a copy of the file as it is now."));
}

QLabel *wrappedLabel(const QString &text, QWidget *parent)
{
    QLabel *label = plainLabel(text, parent);
    label->setWordWrap(true);
    return label;
}

QTreeWidget *listOf(const SavingLosses &losses, QWidget *parent)
{
    auto *list = new QTreeWidget(parent);
    list->setAccessibleName(Texts::tr("Values that are not kept"));
    list->setHeaderLabels({Texts::tr("Record"), Texts::tr("Field"), Texts::tr("What would happen")});
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->setAlternatingRowColors(true);
    for (const SavingLoss &loss : losses.listed) {
        auto *item = new QTreeWidgetItem({loss.record, loss.field, loss.sentence});
        item->setToolTip(2, escapedToolTip(loss.sentence));
        item->setSizeHint(0, {0, list->fontMetrics().height() + 6});
        list->addTopLevelItem(item);
    }
    for (const int column : {0, 1}) {
        constexpr int kWidest = 200;
        list->resizeColumnToContents(column);
        list->setColumnWidth(column, qMin(kWidest, list->columnWidth(column) + 12));
    }
    list->setCurrentItem(list->topLevelItem(0));
    return list;
}

/// The sheet; it ends with one of the answers.
class Sheet : public QDialog
{
public:
    Sheet(const QString &name, const SavingLosses &losses, QWidget *parent)
        : QDialog(parent), m_losses(losses), m_list(listOf(losses, this))
    {
        setObjectName(u"savingLosses"_s);
        setWindowTitle(Texts::tr("Save"));
        setAttribute(Qt::WA_DeleteOnClose);
        setWindowModality(parent ? Qt::WindowModal : Qt::ApplicationModal);
        QLabel *title = wrappedLabel(headline(name, losses), this);
        QFont font = title->font();
        font.setBold(true);
        title->setFont(font);
        auto *layout = new QVBoxLayout(this);
        layout->setSpacing(10);
        layout->addWidget(title);
        layout->addWidget(wrappedLabel(explanation(losses), this));
        layout->addWidget(m_list, 1);
        layout->addWidget(buttons());
        // Return belongs to the default button, wherever the focus is.
        connect(m_list, &QTreeWidget::itemDoubleClicked, this, [this] { done(GoTo); });
        constexpr QSize kFrame {24, 64}; // what a window manager puts around
        resize(QSize(680, 380).boundedTo(screen()->availableSize() - kFrame));
    }
    qsizetype place() const
    {
        const int row = m_list->indexOfTopLevelItem(m_list->currentItem());
        return row < 0 ? -1 : m_losses.listed.at(row).place;
    }

private:
    QDialogButtonBox *buttons()
    {
        auto *box = new QDialogButtonBox(this);
        const bool isBarred = m_losses.takingOthers > 0;
        const auto add = [&](const QString &text, QDialogButtonBox::ButtonRole role, Answer answer) {
            QPushButton *button = box->addButton(text, role);
            connect(button, &QPushButton::clicked, this, [this, answer] { done(answer); });
            return button;
        };
        QPushButton *first = nullptr;
        if (m_losses.isFixable)
            first =
                add(isBarred ? Texts::tr("&Fix") : Texts::tr("&Fix All"), QDialogButtonBox::AcceptRole, Fix);
        add(Texts::tr("&Go to"), QDialogButtonBox::ActionRole, GoTo);
        if (!isBarred)
            add(Texts::tr("Save &Anyway"), QDialogButtonBox::DestructiveRole, SaveAnyway);
        QPushButton *cancel = box->addButton(QDialogButtonBox::Cancel);
        connect(box, &QDialogButtonBox::rejected, this, &QDialog::reject);
        first = first ? first : cancel;
        first->setDefault(true);
        first->setFocus();
        return box;
    }

    SavingLosses m_losses;
    QTreeWidget *m_list;
};

} // namespace

void ask(Document &document, const QString &type, QWidget *parent,
         const std::function<void(bool mayBeSaved)> &then)
{
    document.commitEditing();
    const auto look = [&] {
        const TurningWindows turning(Texts::tr("Saving “%1”…").arg(document.displayName()), parent);
        return document.savingLosses(type);
    };
    const SavingLosses losses = look();
    if (losses.isEmpty()) {
        then(true);
        return;
    }
    auto *sheet = new Sheet(document.displayName(), losses, parent);
    const QPointer<Document> guarded(&document);
    QObject::connect(sheet, &QDialog::finished, sheet, [=](int answer) {
        if (!guarded)
            return;
        const TurningWindows turning(Texts::tr("Saving “%1”…").arg(guarded->displayName()), parent);
        if (answer == SaveAnyway) {
            guarded->acceptSavingLosses();
            then(true);
        } else if (answer == Fix && guarded->fixSavingLosses() > 0) {
            // What nobody could fix is asked about once more.
            ask(*guarded, type, parent, then);
        } else {
            if (answer == GoTo || answer == Fix)
                Q_EMIT guarded->showPlaceRequested(sheet->place());
            then(false);
        }
    });
    sheet->open();
}

} // namespace runebook::LossSheet
