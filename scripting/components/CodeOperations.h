#pragma once

#include "codeeditor/JSTDocument.h"
#include "codeeditor/JSTTextView.h"
#include "codeeditor/VXCodeTextStorage.h"
#include "codeeditor/VXLineNumberView.h"
#include "scripting/classes/NewObject.h"
#include "scripting/classes/ScriptHelpers.h"

#include <QAbstractScrollArea>

namespace runebook {

/// Operations of a code document whose C++ forms scripts cannot call as they are. Its tokenizer is an object
/// of its own to scripts: TDTokenizer, with TDToken and TDReader.
class CodeDocumentOperations : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE runebook::bridge::NewObject
    initWithTokenizer(JSTDocument *, const std::shared_ptr<TDTokenizer> &tokenizer) const;
    /// Nothing of a code document is archived.
    Q_INVOKABLE runebook::bridge::NewObject initWithCoder(JSTDocument *, const QVariant &archive) const;
    Q_INVOKABLE QVariantMap encodeWithCoder(JSTDocument *) const;
    /// What the text tells after an edit: colours it unless that is done.
    Q_INVOKABLE void textStorageDidProcessEditing(JSTDocument *document, const QVariant &notification) const;
};

/// The same for the text of a code view.
class CodeStorageOperations : public QObject
{
    Q_OBJECT
public:
    /// A text, another storage, or None.
    Q_INVOKABLE runebook::bridge::NewObject initWithAttributedString(VXCodeTextStorage *,
                                                                     const QVariant &contents) const;
};

/// The same for a ruler with line numbers. Colours are texts such as "#202020"; None stands for the default.
class RulerOperations : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE runebook::bridge::NewObject initWithScrollView(VXLineNumberView *,
                                                               QAbstractScrollArea *view) const;
    /// NSNotFound when no line is there.
    Q_INVOKABLE qint64 lineNumberForLocation(VXLineNumberView *ruler, double location) const;
    /// A ruler with the settings of an archive.
    Q_INVOKABLE runebook::bridge::NewObject initWithCoder(VXLineNumberView *,
                                                          const QVariantMap &archive) const;
    Q_INVOKABLE void setTextColor(VXLineNumberView *ruler, const QVariant &color) const;
    Q_INVOKABLE void setAlternateTextColor(VXLineNumberView *ruler, const QVariant &color) const;
    Q_INVOKABLE QVariant backgroundColor(VXLineNumberView *ruler) const;
    Q_INVOKABLE void setBackgroundColor(VXLineNumberView *ruler, const QVariant &color) const;
    /// Numbers of Qt::Alignment: 1 left, 2 right.
    Q_INVOKABLE int alignment(VXLineNumberView *ruler) const;
    Q_INVOKABLE void setAlignment(VXLineNumberView *ruler, int alignment) const;
};

/// The same for a tokenizer.
class TokenizerOperations : public QObject
{
    Q_OBJECT
public:
    /// Colours are texts and fonts are maps in it, as in what keywords() answers.
    Q_INVOKABLE void setKeywords(const std::shared_ptr<TDTokenizer> &tokenizer,
                                 const QVariantHash &keywords) const;
};

/// What scripts ask a code text view beside its own operations.
class CodeViewOperations : public QObject
{
    Q_OBJECT
public:
    /// The completions for the partial word at \a range; \a index gets the place of the one to offer first.
    Q_INVOKABLE QStringList completionsForPartialWordRangeIndexOfSelectedItem(JSTTextView *view,
                                                                              runebook::TextRange range,
                                                                              int *index) const;
};

/// Functions about braces for the modules that ship with the program; a character is a UTF-16 unit.
class BraceOperations : public QObject
{
    Q_OBJECT
public:
    Q_INVOKABLE void initBraces(ScriptHelpers *) const;
    Q_INVOKABLE bool TE_isOpeningBrace(ScriptHelpers *, quint16 character) const;
    Q_INVOKABLE bool TE_isClosingBrace(ScriptHelpers *, quint16 character) const;
    /// The range [location, 1] of the brace that matches the one at \a index; invalid when there is none.
    Q_INVOKABLE QVariant TE_findMatchingBraceForRangeInString(ScriptHelpers *, int index,
                                                              const QString &text) const;
};

/// Makes them known to the bridge, with the classes and the types that they need.
void registerCodeOperations();

} // namespace runebook
