#include "app/languages.h"

#include <QCoreApplication>
#include <QDebug>
#include <QTranslator>

#include <memory>
#include <vector>

using namespace Qt::Literals::StringLiterals;

bool loadLanguage(const QString& language)
{
    auto translator = std::make_unique<QTranslator>();
    if (!translator->load(language == "zh"_L1 ? u":/app_zh.qm"_s : u":/app_en.qm"_s)) {
        qDebug() << "Load language failed.";
        return false;
    }
    // The application keeps a plain pointer even to a translator that it calls unusable, so both kinds are
    // kept.
    static std::vector<std::unique_ptr<QTranslator>> translators;
    const bool installed = QCoreApplication::installTranslator(translator.get());
    translators.push_back(std::move(translator));
    if (!installed)
        qDebug() << "install translator failed.";
    return installed;
}
