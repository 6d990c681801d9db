#include "widgets/kvlineeditbase.h"

#include "widgets/styledeclaration.h"

using namespace Qt::Literals::StringLiterals;

KvLineEditBase::KvLineEditBase(QWidget* parent) : QLineEdit(parent)
{
    setStyleSheet(u"KvLineEditBase { font: 12px \"Noto Sans SC Medium\"; color: #555555; "
                  "border: 1px solid #ACACAC; border-radius: 3px; }"
                  "KvLineEditBase:disabled { color: #C7C7C7; }"_s);
    setAlignment(Qt::AlignCenter);
}

void KvLineEditBase::setBorderColor(QString colour)
{
    const QString declaration = u"border: 1px solid "_s + colour + u';';
    QString sheet = styleSheet();
    if (!replaceStyleDeclaration(sheet, u"border"_s, declaration))
        sheet += declaration;
    setStyleSheet(sheet);
}

void KvLineEditBase::focusInEvent(QFocusEvent* event)
{
    setBorderColor(u"#004B6A"_s);
    emit signalMouseHoverd(true);
    QLineEdit::focusInEvent(event);
}

void KvLineEditBase::focusOutEvent(QFocusEvent* event)
{
    setBorderColor(u"#ACACAC"_s);
    QLineEdit::focusOutEvent(event);
    emit signalMouseHoverd(false);
}
