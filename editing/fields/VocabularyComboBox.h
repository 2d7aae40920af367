#pragma once

#include <QComboBox>

namespace runebook {

/// A text field with a list of suggestions, completed while typing wherever the typed letters occur; any
/// other text may stand in it as well. What was typed or chosen is announced when the user leaves the field,
/// presses Return or chooses from the list; Escape takes it back.
class VocabularyComboBox : public QComboBox
{
    Q_OBJECT
public:
    explicit VocabularyComboBox(QWidget *parent = nullptr);

public: // content
    /// The suggestions, in the order in which the list shows them.
    void setVocabulary(const QStringList &words);
    /// Shows \a text; announces nothing.
    void setText(const QString &text);
    /// Shows that several records differ: nothing but a placeholder.
    void setMultipleValues();
    QString text() const { return currentText(); }
    bool isMixed() const { return m_isMixed; }

public Q_SLOTS:
    /// Hands over what was typed since; does nothing when that is nothing.
    void commitEditing();
    void revert();

Q_SIGNALS:
    /// The user has finished: the new text. Not when it is the one that was there.
    void textCommitted(const QString &text);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    QString m_text;
    bool m_isMixed = false;
    bool m_isTouched = false; ///< something was typed or chosen since the text was set
};

} // namespace runebook
