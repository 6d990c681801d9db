#include "widgets/kvcomboboxbase.h"

#include "widgets/nofocusframedelegate.h"

#include <QApplication>
#include <QListView>
#include <QWheelEvent>

#include <cstring>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int listGap = 2;

} // namespace

KVComboBoxBase::KVComboBoxBase(QWidget* parent) : QComboBox(parent)
{
    QApplication::setEffectEnabled(Qt::UI_AnimateCombo, false);
    QWidget* container = view()->parentWidget();
    if (container != nullptr
        && std::strcmp(container->metaObject()->className(), "QComboBoxPrivateContainer") == 0) {
        container->setWindowFlag(Qt::NoDropShadowWindowHint);
        // What the combo box and those around it declare for themselves reaches the list's window as well.
        container->setStyleSheet(u"border: none; padding: 0px; margin: 0px;"_s);
    }
    auto* list = new QListView(this);
    list->setItemDelegate(new NoFocusFrameDelegate(list));
    list->setStyleSheet(uR"(
QListView { background: #FFFFFF; color: #555555; border: 1px solid #A7A7A7; border-radius: 0px; padding: 0px; outline: none; }
QListView::item { min-height: 24px; padding-left: 5px; border: none; }
QListView::item:selected, QListView::item:hover { background: #D7E7EE; color: #004B6A; })"_s);
    setView(list);
}

void KVComboBoxBase::showPopup()
{
    // Qt opens no list then, and would not tell that it closes.
    if (count() == 0)
        return;
    emit popupShown();
    QComboBox::showPopup();
    if (auto* popup = findChild<QFrame*>(QString(), Qt::FindDirectChildrenOnly))
        popup->move(popup->x(), popup->y() + listGap);
}

void KVComboBoxBase::hidePopup()
{
    emit popupHidden();
    QComboBox::hidePopup();
}

void KVComboBoxBase::wheelEvent(QWheelEvent* event)
{
    event->ignore();
}
