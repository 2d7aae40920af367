#pragma once

#include "codeeditor/JSTDocument.h"
#include "codeeditor/JSTTextView.h"
#include "codeeditor/KeywordTable.h"
#include "codeeditor/VXCodeTextStorage.h"

#include <QTest>

/// A shown editor as the macro panel makes it.
struct EditorFixture {
    JSTTextView view;
    JSTDocument document;

    EditorFixture()
    {
        using namespace Qt::StringLiterals;
        const QFont regular = document.defaultFont();
        QFont bold = regular;
        bold.setBold(true);
        QFont italic = regular;
        italic.setItalic(true);
        runebook::setUpPythonTokenizer(
            *document.tokenizer(),
            runebook::defaultKeywordAttributes({regular, bold, italic}, view.palette()));
        document.setAutocompleteKeywords(
            {u"for"_s, u"format"_s, u"Foo"_s, u".glyphs"_s, u".glue"_s, u"print"_s});
        document.setSourceText(&view);
        view.resize(600, 400);
        view.show();
        view.activateWindow();
        view.setFocus();
        (void)QTest::qWaitForWindowExposed(&view);
    }

    QVariantMap attributesAt(int index) const
    {
        return view.textStorage()->attributesAtIndexEffectiveRange(index, nullptr);
    }
    QColor colorAt(int index) const
    {
        return attributesAt(index).value(runebook::foregroundColorAttributeName).value<QColor>();
    }
    QFont fontAt(int index) const
    {
        return attributesAt(index).value(runebook::fontAttributeName).value<QFont>();
    }
    void select(int location, int length = 0) { view.setSelectedRange({location, length}); }
};
