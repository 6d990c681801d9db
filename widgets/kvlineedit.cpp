#include "widgets/kvlineedit.h"

#include "widgets/kvslider.h"
#include "widgets/popwidget.h"

#include "ui_kvlineedit.h"

#include <QApplication>
#include <QScopedValueRollback>
#include <QWindow>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int anchoredGap = 5;
constexpr int anchoredHeight = 30;
constexpr int ownHeight = 20;

} // namespace

KvLineEdit::KvLineEdit(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::KvLineEdit>()),
      slider(std::make_unique<KvSlider>(Qt::Horizontal))
{
    ui->setupUi(this);
    KvLineEditBase* editor = ui->le_kv_line_edit_base;
    setFocusProxy(editor);
    connect(editor, &KvLineEditBase::signalMouseHoverd, this, &KvLineEdit::slotMouseHoverd);

    slider->setObjectName(u"popupSlider"_s);
    slider->setFocusPolicy(Qt::NoFocus);
    slider->setStyleSheet(
        u"QSlider { background: transparent; }"
        "QSlider::groove:horizontal { border: 1.5px solid #C7C7C7; height: 0px; border-radius: 1px; }"
        "QSlider::handle:horizontal { image: url(:/img/assets/btn_setting_thumbs.svg); border: none; "
        "width: 9px; height: 9px; margin: -22px 0px; }"
        "QSlider::sub-page:horizontal { border: 1.5px solid #004B6A; height: 0px; border-radius: 1px; }"_s);
    connect(slider.get(), &QSlider::valueChanged, this, &KvLineEdit::onSliderMoved);
    // A typed number beyond the range leaves the slider at its end, where a press on it changes no value.
    connect(slider.get(), &QSlider::sliderReleased, this, [this] {
        if (this->text() != QString::number(slider->value()))
            onSliderMoved(slider->value());
    });
    connect(editor, &QLineEdit::textEdited, this, [this](const QString& text) {
        unsent.edited();
        emit textEdited(text);
    });
    connect(editor, &QLineEdit::editingFinished, this, &KvLineEdit::onEditingFinished);
}

KvLineEdit::~KvLineEdit()
{
    // The editor outlives this part of its parent and may lose the focus on its way out.
    ui->le_kv_line_edit_base->disconnect(this);
    // The pop-up holds the slider and would take it along.
    slider.reset();
}

void KvLineEdit::setAnchor(QWidget* widget)
{
    anchor = widget;
}

void KvLineEdit::setSliderRange(int minimum, int maximum)
{
    const QScopedValueRollback guard(updating, true);
    slider->setRange(minimum, maximum);
}

QString KvLineEdit::text() const
{
    return ui->le_kv_line_edit_base->text();
}

void KvLineEdit::setText(const QString& text)
{
    const QScopedValueRollback guard(updating, true);
    ui->le_kv_line_edit_base->setText(text);
    moveSliderTo(text);
    unsent.sent(text);
}

void KvLineEdit::slotMouseHoverd(bool shown)
{
    if (!shown) {
        if (popup == nullptr)
            return;
        // Not every window system heeds that the pop-up wants no focus: then it gives it back.
        if (QApplication::activeWindow() == popup.get())
            QMetaObject::invokeMethod(window(), &QWidget::activateWindow, Qt::QueuedConnection);
        else
            popup->hide();
        return;
    }

    if (popup == nullptr) {
        popup = std::make_unique<PopWidget>(nullptr);
        popup->setWindowFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus);
        popup->setAttribute(Qt::WA_ShowWithoutActivating);
        popup->setFocusPolicy(Qt::NoFocus);
        popup->addWidget(slider.get());
    }
    const QWidget* editor = ui->le_kv_line_edit_base;
    const QPoint under = editor->mapToGlobal(QPoint(0, editor->height()));
    if (const QWidget* over = anchor.data())
        popup->setGeometry(over->mapToGlobal(QPoint(0, 0)).x(), under.y() + anchoredGap, over->width(),
                           anchoredHeight);
    else
        popup->setGeometry(under.x(), under.y(), editor->width(), ownHeight);
    // Keeps it above the window it belongs to, though it has no parent; window managers look when it is
    // shown.
    popup->winId();
    popup->windowHandle()->setTransientParent(window()->windowHandle());
    popup->show();
}

void KvLineEdit::onSliderMoved(int value)
{
    if (updating)
        return;
    const QScopedValueRollback guard(updating, true);
    const QString text = QString::number(value);
    ui->le_kv_line_edit_base->setText(text);
    unsent.sent(text);
    emit textFinished(text);
}

void KvLineEdit::onEditingFinished()
{
    const QString text = this->text();
    if (updating || !unsent.isUnsent(text))
        return;
    const QScopedValueRollback guard(updating, true);
    moveSliderTo(text);
    unsent.sent(text);
    emit textFinished(text);
}

void KvLineEdit::moveSliderTo(const QString& text)
{
    bool isNumber = false;
    const int value = text.toInt(&isNumber);
    if (isNumber)
        slider->setValue(value);
}
