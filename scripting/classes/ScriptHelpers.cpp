#include "scripting/classes/ScriptHelpers.h"

#include "model/FieldTable.h"
#include "model/StringHelpers.h"
#include "model/UnicodeData.h"
#include "model/VXGlyphInfo.h"
#include "platform/FilePath.h"
#include "platform/Unattended.h"
#include "scripting/classes/ScriptDialogs.h"
#include "scripting/python/ScriptRun.h"

#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QMetaProperty>
#include <QMimeData>
#include <QProgressDialog>
#include <QUrl>
#include <limits>

namespace runebook {

ScriptHelpers &ScriptHelpers::shared()
{
    static ScriptHelpers helpers;
    return helpers;
}

bool ScriptHelpers::canAsk() const
{
    return !isUnattended();
}

void ScriptHelpers::setCanAsk(bool canAsk)
{
    setUnattended(!canAsk);
}

void ScriptHelpers::showMessage(const QString &title, const QString &text)
{
    ScriptDialogs::showMessage(title, text);
}

QString ScriptHelpers::askText(const QString &prompt, const QString &text)
{
    const QString key = QStringLiteral("text");
    const QVariantMap field {{QStringLiteral("key"), key}, {QStringLiteral("value"), text}};
    return ScriptDialogs::askFields(prompt, {field}, ScriptDialogs::Memory::None)
        .toMap()
        .value(key)
        .toString();
}

QVariant ScriptHelpers::askFields(const QString &prompt, const QVariantList &fields)
{
    return ScriptDialogs::askFields(prompt, fields);
}

QString ScriptHelpers::askYesNo(const QString &question, const QString &explanation)
{
    return ScriptDialogs::askYesNo(question, explanation);
}

QString ScriptHelpers::askFile(const QString &prompt, bool isToSave, const QString &name,
                               const QStringList &filters)
{
    return ScriptDialogs::askFile(prompt, isToSave, name, filters);
}

QVariant ScriptHelpers::answerFor(const QString &key) const
{
    const auto found = m_answers.constFind(key);
    return found == m_answers.constEnd() ? QVariant() : QVariant(*found);
}

bool ScriptHelpers::showProgress(const QString &title, int value, int maximum)
{
    constexpr qint64 kMomentMs = 300;
    if (!canAsk())
        return true;
    if (!m_progress) {
        m_progress = new QProgressDialog(ScriptDialogs::windowBelow());
        m_progress->setMinimumWidth(ScriptDialogs::leastWidth(*m_progress));
        m_progress->setWindowTitle(ScriptRun::currentName());
        m_progress->setWindowModality(Qt::ApplicationModal);
        m_progress->setLabelText(title.toHtmlEscaped());
        m_progress->setAutoReset(false);
        m_progress->setAutoClose(false);
        // It shows itself by a timer otherwise, and those wait for the end of the run.
        m_progress->setMinimumDuration(std::numeric_limits<int>::max());
        m_sinceProgress.start();
    }
    if (m_sinceProgress.elapsed() < kMomentMs)
        return true;
    m_progress->setMaximum(maximum);
    m_progress->show();
    m_progress->setValue(value);
    const bool goesOn = !m_progress->wasCanceled();
    if (!goesOn)
        endProgress();
    return goesOn;
}

void ScriptHelpers::endProgress()
{
    delete m_progress;
}

void ScriptHelpers::processEvents()
{
    QCoreApplication::processEvents();
    // Without windows no event loop comes by to delete what was closed; a script that works through many
    // files must not keep them all.
    if (!canAsk())
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

void ScriptHelpers::beep()
{
    QApplication::beep();
}

bool ScriptHelpers::openURL(const QString &url)
{
    const QUrl parsed(url);
    return QDesktopServices::openUrl(parsed.scheme().isEmpty() ? QUrl::fromLocalFile(url) : parsed);
}

QString ScriptHelpers::clipboardText() const
{
    return QGuiApplication::clipboard()->text();
}

bool ScriptHelpers::hasClipboardText() const
{
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    return data && data->hasText();
}

void ScriptHelpers::setClipboardText(const QString &text)
{
    QGuiApplication::clipboard()->setText(text);
}

void ScriptHelpers::clearClipboard()
{
    QGuiApplication::clipboard()->clear();
}

QStringList ScriptHelpers::fieldKeys() const
{
    QStringList keys;
    const QMetaObject &record = VXGlyphInfo::staticMetaObject;
    for (int i = 0; i < record.propertyCount(); ++i) {
        const QString key = QString::fromLatin1(record.property(i).name());
        const std::optional<GlyphField> field = fieldForKey(key);
        if (field && rowOf(*field).filePlace != 0)
            keys << key;
    }
    return keys;
}

quint32 ScriptHelpers::hexStringToInt(const QString &text) const
{
    return runebook::hexStringToInt(text);
}

QString ScriptHelpers::hexStringFromInt(qint64 number) const
{
    return runebook::hexStringFromInt(number);
}

QVariantMap ScriptHelpers::unicodeData(quint32 codePoint) const
{
    using namespace Qt::StringLiterals;
    const UnicodeData &data = UnicodeData::shared();
    if (!data.isAssigned(codePoint))
        return {};
    const UnicodeData::Decomposition decomposition = data.decomposition(codePoint);
    QVariantList parts;
    for (const char32_t part : decomposition.parts)
        parts += qint64(part);
    return {{u"name"_s, data.name(codePoint)},
            {u"aliases"_s, data.aliases(codePoint)},
            {u"category"_s, data.category(codePoint)},
            {u"block"_s, data.block(codePoint)},
            {u"script"_s, data.script(codePoint)},
            {u"direction"_s, data.bidiClass(codePoint)},
            {u"combining"_s, data.combiningClass(codePoint)},
            {u"mirrored"_s, data.isMirrored(codePoint)},
            {u"upper"_s, qint64(data.upper(codePoint))},
            {u"lower"_s, qint64(data.lower(codePoint))},
            {u"title"_s, qint64(data.title(codePoint))},
            {u"decomposition"_s, parts},
            {u"decompositionTag"_s, decomposition.tag}};
}

QString ScriptHelpers::stringWithChar(quint32 codePoint) const
{
    return runebook::stringWithChar(codePoint);
}

QVariantList ScriptHelpers::character32AtIndex(const QString &text, qint64 index) const
{
    if (index < 0 || index >= text.size())
        throw std::out_of_range("no character stands at that place");
    qsizetype place = index;
    const char32_t character = runebook::character32AtIndex(text, place);
    return {static_cast<qint64>(character), static_cast<qint64>(place)};
}

QVariantList ScriptHelpers::rangeOfLine(const QString &text, int number) const
{
    const UnitRange range = runebook::rangeOfLine(text, number);
    return {static_cast<qint64>(range.location), static_cast<qint64>(range.length)};
}

QString ScriptHelpers::UUID() const
{
    return runebook::UUID();
}

} // namespace runebook
