#pragma once

#include "codeeditor/JSTTextViewDelegate.h"
#include "codeeditor/TextRange.h"
#include "platform/WheelSteps.h"
#include "platform/documents/FileState.h"

#include <QFont>
#include <QObject>
#include <QPointer>
#include <QVariantMap>
#include <memory>
#include <optional>

class JSTDocument;
class JSTTextView;
class QWidget;

Q_MOC_INCLUDE("codeeditor/JSTDocument.h")
Q_MOC_INCLUDE("codeeditor/JSTTextView.h")

/// One tab of the macro panel: its title, its code, and an editor for it. The editor is made when it is first
/// seen or asked for; until then the code is only a text. Main thread only.
class VXMacroViewController : public QObject, public JSTTextViewDelegate
{
    Q_OBJECT
    Q_INTERFACES(JSTTextViewDelegate)
    Q_PROPERTY(QString title READ title WRITE setTitle NOTIFY titleChanged)
    Q_PROPERTY(QWidget *view READ view)
    Q_PROPERTY(int macroFontSize READ macroFontSize WRITE setMacroFontSize)
    Q_PROPERTY(QFont macroFont READ macroFont)
    Q_PROPERTY(QFont macroFontBold READ macroFontBold)
public:
    Q_INVOKABLE explicit VXMacroViewController(QObject *parent = nullptr);
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
    /// The script file whose text this is; empty for a tab of the panel's own.
    QString filePath() const { return m_filePath; }
    /// The text that the file was known to have last.
    QString savedText() const { return m_savedText; }
    /// The tab belongs to the file at \a path, which has the text \a savedText.
    void setFile(const QString &path, const QString &savedText);
    /// Whether the file on the disk is another one, or was written to, since the last call.
    bool takeFileChange();
    /// What stands in the tab. Belongs to this object, whatever its parent is.
    QWidget *view() const { return m_view; }
    /// The editor.
    Q_INVOKABLE JSTTextView *macroText();
    /// Colours and completes the editor's text.
    Q_INVOKABLE JSTDocument *document();
    bool isEditorMade() const;

public: // running
    /// Runs the whole text.
    Q_INVOKABLE void runMacro();
    /// Runs selectedCode(); without a selection the caret goes on to the next line.
    Q_INVOKABLE void runSelection();
    /// The selected text, whole lines when it spans several, or the line of the caret; with empty lines in
    /// front so that lines keep their numbers. A piece that is indented is made to run as it stands.
    Q_INVOKABLE QString selectedCode();
    Q_INVOKABLE void runMacroString(const QString &code);

public: // fonts; sizes in points
    int macroFontSize();
    void setMacroFontSize(int size);
    Q_INVOKABLE void setUpFonts();
    /// The fonts are made when one is first asked for, in the size of the default.
    QFont macroFont();
    QFont macroFontBold();
    QFont macroFontItalic();
    /// Change the default "MacroCodeFontSize", which all tabs and the console follow; 7 to 40.
    Q_INVOKABLE static void zoomIn();
    Q_INVOKABLE static void zoomOut();
    Q_INVOKABLE static void zoomFitInWindow();
    /// Larger for positive \a steps.
    static void zoomBySteps(int steps);

public: // lines, counted from 1
    /// From the start of the line to that of the next one. Empty at the text's end for a line there is not.
    Q_INVOKABLE runebook::TextRange rangeForLine(int line);
    Q_INVOKABLE void selectTextForLine(int line);

public: // restoration
    /// Puts the whole text under "macroText".
    Q_INVOKABLE void encodeRestorableStateWithCoder(QVariantMap *coder) const;
    Q_INVOKABLE void restoreStateWithCoder(const QVariantMap &coder);

public: // called by the editor
    Q_INVOKABLE void textDidChange(JSTTextView *view) override;
    QStringList textViewCompletionsForPartialWordRangeIndexOfSelectedItem(JSTTextView *view,
                                                                          const QStringList &words,
                                                                          runebook::TextRange range,
                                                                          int *selectedIndex) override;
    runebook::KnownNames textViewNamesAtPath(JSTTextView *view, const QString &path,
                                             const QString &start) override;
    void textViewDescribeCompletion(JSTTextView *view, runebook::TextRange range,
                                    runebook::Completion &one) override;

Q_SIGNALS:
    void titleChanged();
    /// What the window would restore has changed.
    void restorableStateChanged();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void makeEditor();
    void applyEditingSettings();
    bool zoomByWheel(const QWheelEvent &wheel);
    void needFonts();
    void giveFontToEditor();
    QVariantHash keywordAttributes() const;

    QString m_title;
    QString m_filePath;
    QString m_savedText;
    runebook::FileState m_fileState;
    QString m_code; ///< until there is an editor
    QPointer<QWidget> m_view; ///< owned; the tab bar changes its parent
    QPointer<JSTTextView> m_macroText;
    JSTDocument *m_document = nullptr; // owned as a child
    int m_macroFontSize = 0;
    runebook::WheelSteps m_wheel;
    std::optional<QFont> m_macroFont;
    QFont m_macroFontBold;
    QFont m_macroFontItalic;
};
