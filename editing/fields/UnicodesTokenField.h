#pragma once

#include <QLineEdit>
#include <QStringList>
#include <vector>

class VXUnicodeFormatter;

namespace runebook {

/// A line of code points, each drawn as a square token: "0041 00E9". A comma, a blank or Return completes
/// the token that is being typed, which is padded and turned to upper case. Keys that make no code point are
/// refused with a word, what else is none is left out with a word. Backspace behind a completed token takes
/// all of it. What was typed is announced when the user leaves the field or presses Return; Escape takes it
/// back.
class UnicodesTokenField : public QLineEdit
{
    Q_OBJECT
public:
    explicit UnicodesTokenField(QWidget *parent = nullptr);

public: // content
    /// Shows \a tokens as they are; announces nothing.
    void setTokens(const QStringList &tokens);
    /// Shows that several records differ: nothing but a placeholder.
    void setMultipleValues();
    /// What the field holds, an unfinished token included.
    QStringList tokens() const;
    bool isMixed() const { return m_isMixed; }
    /// The same as a script asks for it, with the tokens as a list or joined by ", ".
    Q_INVOKABLE QStringList objectValue() const { return tokens(); }
    Q_INVOKABLE QString stringValue() const;
    /// As if the tokens had been typed: they are brought into their final form, and handed over by
    /// commitEditing().
    Q_INVOKABLE void setObjectValue(const QStringList &tokens);
    Q_INVOKABLE void setStringValue(const QString &text);

public: // typing
    /// Whether something was typed that nobody has taken yet.
    bool hasPendingText() const { return m_isTouched && text() != m_tokens.join(u' '); }
    /// Brings what was typed into its final form, without handing it over; returns a word on what was left
    /// out, null for none.
    QString settle();

public Q_SLOTS:
    /// Hands over what was typed since; does nothing when that is nothing.
    void commitEditing();
    void revert();

Q_SIGNALS:
    /// The user has finished: the new code points. Not when they are those that were there.
    void tokensCommitted(const QStringList &tokens);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void inputMethodEvent(QInputMethodEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    bool event(QEvent *event) override;

private:
    struct Token {
        int start;
        int length;
    };
    std::vector<Token> visibleTokens() const;
    void spaceTokens();
    void completeTokens();
    bool removeTokenBeforeCursor();
    void showTokens(const QStringList &tokens);
    void replaceText(const QString &text);
    bool takesTyped(const QString &typed);
    void paintToken(QPainter &painter, const Token &token) const;
    int xOfPosition(int position) const;
    QString tipAt(const QPoint &position) const;

    VXUnicodeFormatter *m_formatter;
    QStringList m_tokens;
    bool m_isMixed = false;
    bool m_isTouched = false; ///< something was typed since the tokens were set
};

} // namespace runebook
