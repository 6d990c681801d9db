#include "tests/support/temporaryhome.h"

#include <QDir>
#include <QtGlobal>

#include <cstdlib>

TemporaryHome::TemporaryHome()
{
    if (!folder.isValid())
        std::abort();
    const QDir root(folder.path());
    for (const char* name : {"config", "data", "cache", "Documents", "work"})
        root.mkpath(QString::fromLatin1(name));
    qputenv("HOME", folder.path().toLocal8Bit());
    qputenv("XDG_CONFIG_HOME", folder.filePath(QStringLiteral("config")).toLocal8Bit());
    qputenv("XDG_DATA_HOME", folder.filePath(QStringLiteral("data")).toLocal8Bit());
    qputenv("XDG_CACHE_HOME", folder.filePath(QStringLiteral("cache")).toLocal8Bit());
    QDir::setCurrent(folder.filePath(QStringLiteral("work")));
}

TemporaryHome::~TemporaryHome()
{
    QDir::setCurrent(QDir::rootPath());
}
