#pragma once

#include "document/VXDocument.h"

#include <QDeadlineTimer>
#include <QSet>

namespace runebook {

/// What a command would do to or make of many records, a row for each: found out in slices, shown, and done
/// in slices. The document must not change in between; who shows a plan makes another one then.
class RecordPlan
{
public:
    /// What is special about a row.
    struct Remark {
        QString text; ///< null for nothing
        bool isLeftOut = false; ///< the row is not done, and this is why
    };

    explicit RecordPlan(VXDocument &document) : m_document(document) { }
    virtual ~RecordPlan() = default;
    Q_DISABLE_COPY_MOVE(RecordPlan)

public: // finding out
    /// Goes on until \a deadline; true when the plan is whole.
    virtual bool planMore(const QDeadlineTimer &deadline) = 0;
    /// The part that is found out, 0 to 1.
    virtual double planned() const = 0;

public: // showing
    /// The columns besides the one for remarks, which comes last. In the first stands the record.
    virtual QStringList headings() const = 0;
    virtual qsizetype countOfRows() const = 0;
    virtual QString text(qsizetype row, int column) const = 0;
    virtual Remark remark(qsizetype row) const = 0;
    /// The column that holds what changes.
    virtual int changedColumn() const = 0;
    /// Whole sentences: how many rows are done, what is left out and why.
    virtual QString summary() const = 0;
    /// Why the plan cannot be made from what was asked for; null when it can.
    virtual QString obstacle() const { return {}; }

public: // choosing
    bool isTaken(qsizetype row) const { return !m_untaken.contains(row) && !remark(row).isLeftOut; }
    void setTaken(qsizetype row, bool isTaken);
    /// Of the rows that can be done; known once the plan is whole.
    qsizetype countOfTaken() const { return countOfDoable() - m_untaken.size(); }

public: // doing
    virtual QString stepName() const = 0;
    /// Whether the rows are new records, which take more memory than changed ones.
    virtual bool makesRecords() const { return true; }
    /// Goes on until \a deadline; true when all is done. To be called inside of one undo group.
    virtual bool applyMore(const QDeadlineTimer &deadline) = 0;
    virtual double applied() const = 0;
    /// The records to be selected afterwards.
    const InfoList &added() const { return m_added; }

protected:
    /// Rows that are not left out.
    virtual qsizetype countOfDoable() const = 0;
    VXDocument &document() const { return m_document; }
    void setAdded(InfoList added) { m_added = std::move(added); }
    /// What stands in the first column of the first row that is taken.
    QString firstTaken() const;
    /// The clock is asked only so often.
    static bool isPause(std::size_t next, const QDeadlineTimer &deadline)
    {
        constexpr std::size_t kBetweenLooks = 64;
        return next % kBetweenLooks == 0 && deadline.hasExpired();
    }

private:
    VXDocument &m_document;
    QSet<qsizetype> m_untaken;
    InfoList m_added;
};

/// Which of the new names cannot be given, and why.
class NewNames
{
public:
    explicit NewNames(const VXDocument &document) : m_document(document) { }
    /// Null when \a name can be given; it counts as given then.
    QString objectionTo(const QString &name);
    bool isGiven(const QString &name) const { return m_given.contains(name); }
    /// Names that some record has already, so far.
    qsizetype countOfTaken() const { return m_taken; }

private:
    const VXDocument &m_document;
    QSet<QString> m_given;
    qsizetype m_taken = 0;
};

} // namespace runebook
