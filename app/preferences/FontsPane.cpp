#include "app/preferences/FontsPane.h"

#include "document/VXDocument.h"
#include "ui_FontsPane.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QHeaderView>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

enum Column { Script, File, ColumnCount };

constexpr double kSampleSize = 28;
// The script of records without one.
const QString kDefaultScript = u"default"_s;

/// Some letters of a script, or of all where none are known here.
QString sampleOf(const QString &script)
{
    static const QHash<QString, QFontDatabase::WritingSystem> systems {
        {u"latin"_s, QFontDatabase::Latin},
        {u"greek"_s, QFontDatabase::Greek},
        {u"cyrillic"_s, QFontDatabase::Cyrillic},
        {u"armenian"_s, QFontDatabase::Armenian},
        {u"hebrew"_s, QFontDatabase::Hebrew},
        {u"arabic"_s, QFontDatabase::Arabic},
        {u"devanagari"_s, QFontDatabase::Devanagari},
        {u"bengali"_s, QFontDatabase::Bengali},
        {u"gurmukhi"_s, QFontDatabase::Gurmukhi},
        {u"gujarati"_s, QFontDatabase::Gujarati},
        {u"oriya"_s, QFontDatabase::Oriya},
        {u"tamil"_s, QFontDatabase::Tamil},
        {u"telugu"_s, QFontDatabase::Telugu},
        {u"kannada"_s, QFontDatabase::Kannada},
        {u"malayalam"_s, QFontDatabase::Malayalam},
        {u"sinhala"_s, QFontDatabase::Sinhala},
        {u"thai"_s, QFontDatabase::Thai},
        {u"lao"_s, QFontDatabase::Lao},
        {u"tibetan"_s, QFontDatabase::Tibetan},
        {u"myanmar"_s, QFontDatabase::Myanmar},
        {u"georgian"_s, QFontDatabase::Georgian},
        {u"khmer"_s, QFontDatabase::Khmer},
        {u"han"_s, QFontDatabase::SimplifiedChinese},
        {u"kana"_s, QFontDatabase::Japanese},
        {u"hangul"_s, QFontDatabase::Korean},
        {u"runic"_s, QFontDatabase::Runic}};
    const auto system = systems.constFind(script.toLower());
    return system == systems.constEnd() ? u"Hamburgefonstiv 0123"_s
                                        : QFontDatabase::writingSystemSample(*system);
}

} // namespace

FontsPane::FontsPane(QWidget *parent) : QWidget(parent), m_ui(std::make_unique<Ui::FontsPane>())
{
    m_ui->setupUi(this);
    m_ui->scripts->setColumnCount(ColumnCount);
    m_ui->scripts->setHeaderLabels({tr("Script"), tr("Font File")});
    m_ui->scripts->header()->setSectionResizeMode(Script, QHeaderView::ResizeToContents);
    m_ui->sample->setMinimumHeight(QFontMetrics(font()).height() * 4);
    connect(m_ui->scripts, &QTreeWidget::currentItemChanged, this, &FontsPane::showSelected);
    connect(m_ui->scripts, &QTreeWidget::itemActivated, this, &FontsPane::choose);
    connect(m_ui->choose, &QPushButton::clicked, this, &FontsPane::choose);
    connect(m_ui->remove, &QPushButton::clicked, this, &FontsPane::remove);
    fillList();
}

FontsPane::~FontsPane() = default;

void FontsPane::fillList()
{
    QStringList scripts = VXDocument::scripts();
    scripts.removeAll(QString());
    scripts.prepend(kDefaultScript);
    for (const QString &script : scripts) {
        auto *item = new QTreeWidgetItem(m_ui->scripts);
        item->setText(Script, script == kDefaultScript ? tr("All others") : script);
        item->setData(Script, Qt::UserRole, script);
        const QString path = VXDocument::previewFontForScript(script);
        item->setText(File, QFileInfo(path).fileName());
        item->setData(File, Qt::UserRole, path);
    }
    m_ui->scripts->setCurrentItem(m_ui->scripts->topLevelItem(0));
}

QString FontsPane::selectedScript() const
{
    const QTreeWidgetItem *item = m_ui->scripts->currentItem();
    return item ? item->data(Script, Qt::UserRole).toString() : QString();
}

void FontsPane::showSelected()
{
    QTreeWidgetItem *item = m_ui->scripts->currentItem();
    if (!item)
        return;
    const QString script = selectedScript();
    const QString path = VXDocument::previewFontForScript(script);
    item->setText(File, QFileInfo(path).fileName());
    m_ui->remove->setEnabled(!path.isEmpty());
    const std::optional<QFont> chosen = VXDocument::fontForScriptSize(script, kSampleSize);
    QFont shown = chosen.value_or(font());
    shown.setPointSizeF(kSampleSize);
    m_ui->sample->setFont(shown);
    m_ui->sample->setText(sampleOf(script));
    if (path.isEmpty())
        m_ui->status->setText(tr("No font file: previews use a font of the system."));
    else if (!chosen)
        m_ui->status->setText(tr("“%1” cannot be used; previews use a font of the system.").arg(path));
    else
        m_ui->status->setText(path);
}

void FontsPane::choose()
{
    auto *panel = new QFileDialog(this, tr("Choose a Font File"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::ExistingFile);
    panel->setNameFilters({tr("Fonts") + " (*.otf *.ttf *.otc *.ttc *.pfb)"_L1, tr("All files") + " (*)"_L1});
    const QString path = VXDocument::previewFontForScript(selectedScript());
    if (!path.isEmpty())
        panel->setDirectory(QFileInfo(path).absolutePath());
    connect(panel, &QFileDialog::fileSelected, this, &FontsPane::useFontFile);
    panel->open();
}

bool FontsPane::useFontFile(const QString &path)
{
    const QString script = selectedScript();
    const QString before = VXDocument::previewFontForScript(script);
    VXDocument::registerPreviewFontForScript(path, script);
    const bool isUsable = VXDocument::fontForScriptSize(script, kSampleSize).has_value();
    if (!isUsable && before.isEmpty())
        VXDocument::removePreviewFontForScript(script);
    else if (!isUsable)
        VXDocument::registerPreviewFontForScript(before, script);
    showSelected();
    if (!isUsable)
        m_ui->status->setText(tr("“%1” is no font that can be used.").arg(path));
    return isUsable;
}

void FontsPane::remove()
{
    VXDocument::removePreviewFontForScript(selectedScript());
    showSelected();
}

} // namespace runebook
