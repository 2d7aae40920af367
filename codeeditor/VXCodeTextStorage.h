#pragma once

#include "codeeditor/TextRange.h"

#include <QColor>
#include <QTextDocument>
#include <QTextLayout>
#include <QVariantMap>
#include <functional>

namespace runebook {
class CodeLayout;
}

/// The text of a code view. A dotted Python name is one word of it, but word motion stops at the dots and a
/// double click takes one component. Indexes and ranges are UTF-16 units; a paragraph's end counts as one.
class VXCodeTextStorage : public QTextDocument
{
    Q_OBJECT
public:
    enum class EditKind { Characters, Attributes };
    Q_ENUM(EditKind)

    /// Empty, or with the characters and attributes of \a contents (none when absent).
    explicit VXCodeTextStorage(QObject *parent = nullptr);
    explicit VXCodeTextStorage(const QTextDocument *contents, QObject *parent = nullptr);

public: // characters
    /// The whole text, with "\n" at each paragraph's end and every other character as it is.
    Q_INVOKABLE QString string() const;
    Q_INVOKABLE int length() const;
    /// The characters of \a range, clamped to the text; without a copy of the whole.
    Q_INVOKABLE QString substringWithRange(runebook::TextRange range) const;
    /// Replaces as one undoable step. The range is clamped to the text.
    Q_INVOKABLE void replaceCharactersInRangeWithString(runebook::TextRange range, const QString &string);

public: // attributes: "NSColor", "NSFont", "NSLink"
    /// Those of the character at \a index, the default colour and font where it has none of its own; empty
    /// outside the text. \a effectiveRange gets the piece around it, inside its paragraph, that shares them.
    Q_INVOKABLE QVariantMap attributesAtIndexEffectiveRange(int index,
                                                            runebook::TextRange *effectiveRange) const;
    /// Visits the pieces of \a range that share their attributes, in order and in linear time.
    void forEachRun(runebook::TextRange range,
                    const std::function<void(runebook::TextRange, const QVariantMap &)> &visit) const;
    /// The same as a list: [attributes, [location, length]].
    QVariantList attributesAtIndexEffectiveRange(int index) const;
    /// Gives the characters of \a range these attributes alone. No undo step: attributes are no content. They
    /// move with their characters; what is put in takes those of the first character it replaces, or else of
    /// the one in front of it.
    Q_INVOKABLE void setAttributesRange(const QVariantMap &attributes, runebook::TextRange range);
    /// Asked for the attributes of characters that nothing lies over: those of blanks, which are kept out of
    /// the layout while nobody sees them. Answers an empty map, or the attributes and narrows the range.
    using BlankAttributes = std::function<QVariantMap(int index, runebook::TextRange *range)>;
    void setBlankAttributes(const BlankAttributes &blankAttributes) { m_blankAttributes = blankAttributes; }
    /// What characters without a colour of their own have.
    void setDefaultForegroundColor(const QColor &color) { m_defaultForegroundColor = color; }

public: // words
    Q_INVOKABLE bool _usesProgrammingLanguageBreaks() const { return true; }
    /// What a double click on the character at \a index selects.
    Q_INVOKABLE runebook::TextRange doubleClickAtIndex(int index) const;
    /// Where the caret goes from \a index by one word: to the next dot inside a dotted name, else to the next
    /// word's start; backward likewise.
    Q_INVOKABLE int nextWordFromIndexForward(int index, bool forward) const
    {
        return nextWord(index, forward ? Way::Forward : Way::Backward);
    }
    enum class Way { Backward, Forward };
    /// The same for those who write C++.
    int nextWord(int index, Way way) const;

public:
    runebook::CodeLayout &codeLayout() const { return *m_layout; }

Q_SIGNALS:
    /// After each edit: \a range as it was before, and how much longer the text became. Edits of attributes
    /// are those made by setAttributesRange().
    void edited(VXCodeTextStorage::EditKind kind, runebook::TextRange range, int changeInLength);

private:
    void reportCharacters(int from, int removed, int added);
    void moveAttributes(int from, int removed, int added);
    void showAttributes(runebook::TextRange range);
    void complete(QVariantMap &attributes, int index, runebook::TextRange *range) const;

    runebook::CodeLayout *m_layout; // owned as the document's layout
    QList<QTextLayout::FormatRange> m_attributes; // ascending; those given by setAttributesRange()
    int m_length = 0; // as of the last edit
    BlankAttributes m_blankAttributes;
    QColor m_defaultForegroundColor = Qt::black;
};
