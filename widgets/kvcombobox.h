#pragma once

#include "widgets/unsenttext.h"

#include <QWidget>

#include <memory>

namespace Ui {
class KvComboBox;
}
class KVComboBoxBase;

/// An editable combo box in a frame that lights up while its list is open or its text is being typed. GUI
/// thread only.
///
/// Typing gives signalLineEditTextChanged for every change and one signalLineEditEditingFinished at the end
/// (Return or loss of focus, whichever comes first). A change of the current entry, by hand or by
/// setCurrentIndex, gives signalLineEditEditingFinished. setText, and whatever a receiver of these signals
/// does to the text, gives nothing.
class KvComboBox : public QWidget
{
    Q_OBJECT

public:
    explicit KvComboBox(QWidget* parent = nullptr);
    ~KvComboBox() override;

    /// Appends an entry; the first one becomes the current one.
    void addItem(const QString& text);
    void addItems(const QStringList& texts);
    /// Removes all entries and the text without a signal.
    void clear();
    int count() const;
    QString itemText(int index) const;
    int currentIndex() const;
    void setCurrentIndex(int index);

    /// What the field holds: an entry or typed text.
    QString text() const;
    /// Rewrites the field; the current entry stays.
    void setText(const QString& text);
    int cursorPosition() const;
    void setCursorPosition(int position);

    /// Whether text can be typed; at first it can. If not, a click into the field opens the list.
    void setTextEditable(bool editable);
    /// The colour of the frame around the combo box.
    void setBorderColor(QString colour);
    void setTextColor(QString colour);
    /// Replaces the combo box's first declaration of `property` by a whole declaration, such as
    /// "border: 1px solid #A7A7A7;"; appended when there is none.
    void setStyleDeclaration(QString property, QString declaration);

    /// The combo box inside, for what is not offered here.
    KVComboBoxBase* comboBox() const;

signals:
    void signalLineEditTextChanged(QString arg1);
    void signalLineEditEditingFinished();
    /// The field's text has changed, by a choice or by typing, but not by a rewriting; comes before the two
    /// above.
    void currentTextChanged(QString text);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    void on_cb_combox_in_widget_currentTextChanged(QString arg1);

private:
    void onTextChanged(const QString& text);
    void onEditingFinished();
    void sendFinished();
    void highlight();
    void endHighlight();

    std::unique_ptr<Ui::KvComboBox> ui;
    QMetaObject::Connection textChangedConnection;
    QMetaObject::Connection editingFinishedConnection;
    UnsentText unsent;
    bool listOpen = false;
    bool typing = false; ///< the change of text under way comes from the keyboard
    bool rewriting = false; ///< the change of text under way is the program's own
};
