#include "app/fonts.h"

#include <QApplication>
#include <QDebug>
#include <QFont>
#include <QFontDatabase>

using namespace Qt::Literals::StringLiterals;

bool loadApplicationFont()
{
    const int id = QFontDatabase::addApplicationFont(u":/font/NotoSansSC-Medium.ttf"_s);
    if (id == -1) {
        qDebug() << "Failed to load font!";
        return false;
    }
    const QStringList families = QFontDatabase::applicationFontFamilies(id);
    if (families.isEmpty())
        return false;

    // "Noto Sans SC Medium" is the font's full name: some font systems list it as a family, others do not.
    for (const QString& name : {u"Noto Sans SC Medium"_s, u"Noto Sans"_s, u"Noto Sans Myanmar"_s})
        QFont::insertSubstitution(name, families.first());

    QFont font(families.first());
    font.setHintingPreference(QFont::PreferNoHinting);
    QApplication::setFont(font);
    return true;
}
