#include "widgets/kvcombobox.h"

#include "widgets/kvcomboboxbase.h"
#include "widgets/styledeclaration.h"

#include "ui_kvcombobox.h"

#include <QLineEdit>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QTimer>

#include <utility>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString litFrame = u"#D7E7EE"_s;
const QString litText = u"#004B6A"_s;
const QString quietFrame = u"transparent"_s;
const QString quietText = u"#A7A7A7"_s;

} // namespace

KvComboBox::KvComboBox(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::KvComboBox>())
{
    ui->setupUi(this);
    KVComboBoxBase* combo = comboBox();
    connect(combo, &KVComboBoxBase::popupShown, this, [this] {
        listOpen = true;
        QTimer::singleShot(0, this, [this] {
            if (!listOpen)
                return;
            ui->comboBoxWidget->setStyleSheet(u"border: 2px solid #D7E7EE; border-radius: 3px;"_s);
            setTextColor(litText);
        });
    });
    connect(combo, &KVComboBoxBase::popupHidden, this, [this] {
        // Qt hides the list of a box that is hidden or disabled as well: a wrong text keeps its mark then.
        if (!std::exchange(listOpen, false))
            return;
        ui->comboBoxWidget->setStyleSheet(
            u"border: 2px solid transparent;                border-radius: 3px;"_s);
        setTextColor(quietText);
    });
    ui->comboBoxWidget->setStyleSheet(u"border: 2px solid transparent; border-radius: 3px;"_s);

    combo->setEditable(true);
    // A completer would turn "1" into "100ms", and Return would add what was typed to the list.
    combo->setCompleter(nullptr);
    combo->setInsertPolicy(QComboBox::NoInsert);
    // The field would take the borders of the frame and of the combo box for its own.
    combo->lineEdit()->setStyleSheet(
        u"QLineEdit { background: transparent; border: none; padding: 0px; margin: 0px; }"
        "QLineEdit:disabled { color: #C7C7C7; }"
        "QMenu { background: #FFFFFF; color: #555555; border: 1px solid #A7A7A7; border-radius: 0px; "
        "padding: 2px; }"
        "QMenu::item:selected { background: #D7E7EE; color: #004B6A; }"
        "QMenu::item:disabled { color: #C7C7C7; }"_s);
    combo->lineEdit()->installEventFilter(this);
    connect(combo->lineEdit(), &QLineEdit::textEdited, this, [this] { typing = true; });
    setTextEditable(true);
}

KvComboBox::~KvComboBox()
{
    // The combo box outlives this part of its parent, and closes its list and its edit when it goes.
    comboBox()->lineEdit()->removeEventFilter(this);
    comboBox()->lineEdit()->disconnect(this);
    comboBox()->disconnect(this);
}

KVComboBoxBase* KvComboBox::comboBox() const
{
    return ui->cb_combox_in_widget;
}

void KvComboBox::addItem(const QString& text)
{
    comboBox()->addItem(text);
}

void KvComboBox::addItems(const QStringList& texts)
{
    comboBox()->addItems(texts);
}

void KvComboBox::clear()
{
    const QScopedValueRollback quiet(rewriting, true);
    comboBox()->clear();
    unsent.sent(text());
}

int KvComboBox::count() const
{
    return comboBox()->count();
}

QString KvComboBox::itemText(int index) const
{
    return comboBox()->itemText(index);
}

int KvComboBox::currentIndex() const
{
    return comboBox()->currentIndex();
}

void KvComboBox::setCurrentIndex(int index)
{
    comboBox()->setCurrentIndex(index);
}

QString KvComboBox::text() const
{
    return comboBox()->lineEdit()->text();
}

void KvComboBox::setText(const QString& text)
{
    // A receiver of the signals only corrects what is being typed: the edit has still to be finished.
    const bool correction = rewriting;
    const QScopedValueRollback quiet(rewriting, true);
    comboBox()->lineEdit()->setText(text);
    if (!correction)
        unsent.sent(text);
}

int KvComboBox::cursorPosition() const
{
    return comboBox()->lineEdit()->cursorPosition();
}

void KvComboBox::setCursorPosition(int position)
{
    comboBox()->lineEdit()->setCursorPosition(position);
}

void KvComboBox::setTextEditable(bool editable)
{
    QLineEdit* field = comboBox()->lineEdit();
    disconnect(textChangedConnection);
    disconnect(editingFinishedConnection);
    if (editable) {
        textChangedConnection = connect(field, &QLineEdit::textChanged, this, &KvComboBox::onTextChanged);
        editingFinishedConnection
            = connect(field, &QLineEdit::editingFinished, this, &KvComboBox::onEditingFinished);
    }
    field->setReadOnly(!editable);
    field->setCursor(editable ? Qt::IBeamCursor : Qt::ArrowCursor);
}

void KvComboBox::setBorderColor(QString colour)
{
    QString sheet = ui->comboBoxWidget->styleSheet();
    if (replaceStyleDeclaration(sheet, u"border"_s, u"border: 2px solid "_s + colour + u';'))
        ui->comboBoxWidget->setStyleSheet(sheet);
}

void KvComboBox::setTextColor(QString colour)
{
    const QString declaration = u"color: "_s + colour + u';';
    QString sheet = comboBox()->styleSheet();
    if (!replaceStyleDeclaration(sheet, u"color"_s, declaration))
        sheet += declaration;
    comboBox()->setStyleSheet(sheet);
}

void KvComboBox::setStyleDeclaration(QString property, QString declaration)
{
    QString sheet = comboBox()->styleSheet();
    if (!replaceStyleDeclaration(sheet, property, declaration))
        sheet += u' ' + declaration;
    comboBox()->setStyleSheet(sheet);
}

bool KvComboBox::eventFilter(QObject* watched, QEvent* event)
{
    const QLineEdit* field = comboBox()->lineEdit();
    if (watched != field || !field->isReadOnly())
        return QWidget::eventFilter(watched, event);

    const auto type = event->type();
    if (type != QEvent::MouseButtonPress && type != QEvent::MouseButtonRelease
        && type != QEvent::MouseButtonDblClick)
        return QWidget::eventFilter(watched, event);
    const auto* mouse = static_cast<QMouseEvent*>(event);
    if (mouse->button() != Qt::LeftButton)
        return QWidget::eventFilter(watched, event);
    if (type == QEvent::MouseButtonPress)
        comboBox()->setFocus(Qt::MouseFocusReason);
    else if (type == QEvent::MouseButtonRelease && field->rect().contains(mouse->position().toPoint()))
        comboBox()->showPopup(); // a list opened by the press would be closed by the release
    return true;
}

void KvComboBox::on_cb_combox_in_widget_currentTextChanged(QString arg1)
{
    if (rewriting)
        return;
    emit currentTextChanged(arg1);
    // An editable combo box reports typing here too.
    const bool chosen = !typing && arg1 == comboBox()->currentData(Qt::DisplayRole).toString();
    if (!chosen)
        return;
    sendFinished();
    endHighlight();
}

void KvComboBox::onTextChanged(const QString& text)
{
    if (!typing)
        return;
    typing = false;
    unsent.edited();
    // The highlight comes first, so that a receiver who finds the text wrong can lay its colours over it.
    highlight();
    const QScopedValueRollback quiet(rewriting, true);
    emit signalLineEditTextChanged(text);
}

void KvComboBox::onEditingFinished()
{
    if (unsent.isUnsent(text()))
        sendFinished();
    endHighlight();
}

void KvComboBox::sendFinished()
{
    const QScopedValueRollback quiet(rewriting, true);
    emit signalLineEditEditingFinished();
    unsent.sent(text());
}

void KvComboBox::highlight()
{
    setBorderColor(litFrame);
    setTextColor(litText);
}

void KvComboBox::endHighlight()
{
    // Colours that mark a wrong text stay.
    if (ui->comboBoxWidget->styleSheet().contains(litFrame))
        setBorderColor(quietFrame);
    setTextColor(quietText);
}
