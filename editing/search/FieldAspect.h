#pragma once

#include "editing/search/SearchKey.h"

#include <QCoreApplication>
#include <QString>
#include <QStringList>
#include <optional>

namespace runebook {

/// What filters and counts look at in a record: a field, or what is worked out of one, as any of its anchors or
/// the length of its name. A small value to be copied.
class FieldAspect
{
    Q_DECLARE_TR_FUNCTIONS(FieldAspect)
public:
    /// All of them, in the order in which people see them.
    static const QList<FieldAspect> &all();
    /// The one with that id, or that stands for another key of searches; nothing when there is none.
    static std::optional<FieldAspect> of(QStringView id);

public: // asking
    /// For scripts and saved filters; also its key in predicates.
    QString id() const { return m_id; }
    /// Translated: "Any Anchor".
    QString title() const;
    /// The texts that it has in a record; none when it is absent or empty.
    QStringList values(const VXGlyphInfo &info) const;
    /// Whether the values are numbers, to be ordered as such.
    bool isNumber() const { return m_key.kind == SearchKey::Kind::Number; }
    /// Whether a record may have several values.
    bool isList() const { return m_key.kind == SearchKey::Kind::List; }
    /// The field that it is, or is worked out of: with a change of that one it changes.
    GlyphField field() const { return m_key.field; }
    /// Whether what is typed into the field is just the value: so that a value can be renamed everywhere.
    bool isField() const { return m_isField; }
    SearchKey key() const { return m_key; }
    /// The words that it is usually filled with; few or none.
    QStringList vocabulary() const;
    friend bool operator==(const FieldAspect &, const FieldAspect &) = default;

private:
    FieldAspect(const QString &id, SearchKey key, bool isField);
    static QList<FieldAspect> makeAll();

    QString m_id;
    SearchKey m_key;
    bool m_isField = false;
};

} // namespace runebook
