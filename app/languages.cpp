#include "app/languages.h"

#include <QCoreApplication>
#include <QDebug>
#include <QTranslator>

#include <memory>
#include <vector>

using namespace Qt::Literals::StringLiterals;

namespace {

/// Chinese for the texts that Qt itself shows, as in file dialogs and in the menus of fields; English needs
/// none. In force until the next call.
void loadTextsOfQt(const QString& language)
{
    static std::unique_ptr<QTranslator> texts;
    texts.reset();
    if (language != "zh"_L1)
        return;
    texts = std::make_unique<QTranslator>();
    if (!texts->load(u":/qtbase_zh_CN.qm"_s) || !QCoreApplication::installTranslator(texts.get()))
        qDebug() << "Qt's own texts stay English.";
}

} // namespace

bool loadLanguage(const QString& language)
{
    auto translator = std::make_unique<QTranslator>();
    if (!translator->load(language == "zh"_L1 ? u":/app_zh.qm"_s : u":/app_en.qm"_s)) {
        qDebug() << "Load language failed.";
        return false;
    }
    // First, so that the program's own texts win.
    loadTextsOfQt(language);
    // The application keeps a plain pointer even to a translator that it calls unusable, so both kinds are
    // kept.
    static std::vector<std::unique_ptr<QTranslator>> translators;
    const bool installed = QCoreApplication::installTranslator(translator.get());
    translators.push_back(std::move(translator));
    if (!installed)
        qDebug() << "install translator failed.";
    return installed;
}
