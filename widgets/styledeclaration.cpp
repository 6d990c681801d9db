#include "widgets/styledeclaration.h"

#include <QRegularExpression>

using namespace Qt::Literals::StringLiterals;

bool replaceStyleDeclaration(QString& sheet, const QString& property, const QString& declaration)
{
    const QRegularExpression pattern(u"(\\b"_s + property + u"[^;]*;)"_s);
    const QRegularExpressionMatch match = pattern.match(sheet);
    if (!match.hasMatch())
        return false;
    sheet.replace(match.capturedStart(1), match.capturedLength(1), declaration);
    return true;
}
