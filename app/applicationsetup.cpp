#include "app/applicationsetup.h"

#include "app/productinfo.h"

#include <QApplication>
#include <QIcon>

void setApplicationAttributes()
{
    QApplication::setAttribute(Qt::AA_DontCreateNativeWidgetSiblings);
    // Deprecated and always on in Qt 6; set all the same, for whoever builds against another Qt.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
#pragma GCC diagnostic pop
}

void nameApplication()
{
    QApplication::setApplicationName(QStringLiteral("KorvaneInsight"));
    QApplication::setApplicationVersion(productinfo::version);
}

void setApplicationIcon()
{
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/img/assets/Korvane logo_navigate.png")));
}
