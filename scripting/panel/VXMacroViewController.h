#pragma once

#include "codeeditor/JSTTextViewDelegate.h"
#include "codeeditor/TextRange.h"

#include <QFont>
#include <QObject>
#include <QPointer>
#include <QVariantMap>
#include <memory>
#include <optional>

class JSTDocument;
class JSTTextView;
class QWidget;

/// One tab of the macro panel: its title, its code, and the editor of it. The editor is made when it is first
/// asked for; until then the code is only a text. Main thread only.
class VXMacroViewController : public QObject, public JSTTextViewDelegate
{
    Q_OBJECT
    Q_INTERFACES(JSTTextViewDelegate)
    Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY titleChanged)
    Q_PROPERTY(QWidget *view READ view)
    Q_PROPERTY(int macroFontSize READ macroFontSize WRITE setMacroFontSize)
    Q_PROPERTY(QFont macroFont READ macroFont)
public:
    explicit VXMacroViewController(QObject *parent = nullptr);
    ~VXMacroViewController() override;
    /// Registers the fallback of "MacroCodeFontSize"; done by making a controller.
    static void initialize();

public: // what it is about
    QString title() const { return m_title; }
    void setTitle(const QString &title);
    /// The whole text.
    Q_INVOKABLE QString code() const;
    /// Replaces everything, as no undoable step.
    Q_INVOKABLE void setCode(const QString &code);
    /// What stands in the tab. Belongs to this object, whatever its parent is.
    QWidget *view();
    /// The editor.
    Q_INVOKABLE JSTTextView *macroText();
    /// Colours and completes the editor's text.
    Q_INVOKABLE JSTDocument *document();

public: // running
    /// Runs the whole text.
    Q_INVOKABLE void runMacro();
    /// Runs the selected text, or the line of the caret. Lines keep their numbers, and a piece that is
    /// indented runs as if it were not.
    Q_INVOKABLE void runSelection();
    Q_INVOKABLE void runMacroString(const QString &code);

public: // fonts; sizes in points
    int macroFontSize() const { return m_macroFontSize; }
    void setMacroFontSize(int size);
    Q_INVOKABLE void setUpFonts();
    QFont macroFont() const { return m_macroFont.value_or(QFont()); }
    /// Nothing where the family of the code font has no bold one.
    const std::optional<QFont> &macroFontBold() const { return m_macroFontBold; }
    const std::optional<QFont> &macroFontItalic() const { return m_macroFontItalic; }
    /// Change the default "MacroCodeFontSize", which all tabs and the console follow; 7 to 40.
    Q_INVOKABLE void zoomIn();
    Q_INVOKABLE void zoomOut();
    Q_INVOKABLE void zoomFitInWindow();

public: // lines, counted from 1
    /// From the start of the line to that of the next one. Empty at the text's end for a line there is not.
    Q_INVOKABLE runebook::TextRange rangeForLine(int line);
    Q_INVOKABLE void selectTextForLine(int line);

public: // restoration
    /// Puts the whole text under "macroText".
    Q_INVOKABLE void encodeRestorableStateWithCoder(QVariantMap *coder) const;
    Q_INVOKABLE void restoreStateWithCoder(const QVariantMap &coder);

public: // called by the editor
    void textDidChange(JSTTextView *view) override;

Q_SIGNALS:
    void titleChanged();
    /// What the window would restore has changed.
    void restorableStateChanged();

private:
    void makeView();
    void setUpColours();

    QString m_title;
    QString m_code; ///< until there is an editor
    QPointer<QWidget> m_view; ///< owned; the tab bar changes its parent
    QPointer<JSTTextView> m_macroText;
    JSTDocument *m_document = nullptr;
    int m_macroFontSize = 0;
    std::optional<QFont> m_macroFont;
    std::optional<QFont> m_macroFontBold;
    std::optional<QFont> m_macroFontItalic;
};
