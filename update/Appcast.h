#pragma once

#include "platform/Error.h"

#include <QByteArrayView>
#include <QObject>
#include <QUrl>
#include <memory>

/// One entry of an update feed: a version that can be fetched, as the feed describes it. All texts come from
/// the feed and are shown as plain text, except the description, which is HTML that nobody has checked.
class SUAppcastItem : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString title MEMBER title)
    Q_PROPERTY(QString versionString MEMBER versionString)
    Q_PROPERTY(QString displayVersionString MEMBER displayVersionString)
    Q_PROPERTY(QString itemDescription MEMBER itemDescription)
    Q_PROPERTY(QString date MEMBER date)
    Q_PROPERTY(QUrl infoURL MEMBER infoURL)
    Q_PROPERTY(QUrl releaseNotesURL MEMBER releaseNotesURL)
public:
    Q_INVOKABLE explicit SUAppcastItem(QObject *parent = nullptr) : QObject(parent) { }

    QString title;
    QString versionString; ///< what is compared; empty when the feed does not tell
    QString displayVersionString; ///< what is shown: the short version, else versionString
    QString itemDescription; ///< at most kMaxDescription characters
    QString date;
    QUrl infoURL; ///< where a person downloads it; empty when the feed names no such page
    QUrl releaseNotesURL;

    static constexpr qsizetype kMaxDescription = 256 * 1024;
};

/// The entries of an update feed in the order in which the feed lists them.
class SUAppcast : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE explicit SUAppcast(QObject *parent = nullptr) : QObject(parent) { }

    Q_INVOKABLE QList<QObject *> items() const { return {m_items.begin(), m_items.end()}; }
    const QList<SUAppcastItem *> &itemList() const { return m_items; }
    /// The appcast owns it.
    Q_INVOKABLE void addItem(SUAppcastItem *item);

private:
    QList<SUAppcastItem *> m_items;
};

namespace runebook {

/// Reads an RSS feed, UTF-8, that comes from anywhere. Null and an error (domain "UpdateError") for what is
/// no such feed and for what a feed has no need of: a document type declaration, elements nested without end,
/// elements with hundreds of attributes, thousands of entries.
std::unique_ptr<SUAppcast> readAppcast(QByteArrayView bytes, Error *error = nullptr);

/// The codes of the errors of this folder, domain "UpdateError".
namespace UpdateError {
inline constexpr int kNoFeed = 1; ///< no address is set
inline constexpr int kAddress = 2; ///< the address, or one that it leads to, is not allowed
inline constexpr int kNetwork = 3;
inline constexpr int kTooLarge = 4;
inline constexpr int kTooSlow = 5;
inline constexpr int kMalformed = 6; ///< no feed, or a hostile one
inline constexpr int kNoVersion = 7; ///< the entry to offer does not tell its version
inline constexpr int kNoEntry = 8;
} // namespace UpdateError

} // namespace runebook
