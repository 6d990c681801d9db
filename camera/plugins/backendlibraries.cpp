#include "camera/plugins/backendlibraries.h"

#include "camera/driver/backendentry.h"

#include <QDebug>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <algorithm>
#include <exception>

#include <dlfcn.h>

namespace korvane::plugins {

namespace {

using VersionFunction = int();
using CreateFunction = Backend*();

/// The loader's own words, without the path that the log line begins with.
QString loaderError(const QString& path)
{
    const char* const text = dlerror();
    QString error = QString::fromLocal8Bit(text ? text : "unknown error");
    if (error.startsWith(path + QLatin1String(": ")))
        error.remove(0, path.size() + 2);
    return error;
}

/// The backend that the library's entry point makes; nothing with the reason.
std::shared_ptr<Backend> create(CreateFunction* entry, QString& reason)
{
    try {
        std::shared_ptr<Backend> backend(entry());
        if (!backend)
            reason = QStringLiteral("korvane_create_backend made none");
        else if (backend->name().empty())
            reason = QStringLiteral("its backend has no name");
        return reason.isEmpty() ? backend : nullptr;
    } catch (const std::exception& error) {
        reason = QStringLiteral("korvane_create_backend threw: ") + QString::fromLocal8Bit(error.what());
    } catch (...) {
        reason = QStringLiteral("korvane_create_backend threw");
    }
    return nullptr;
}

/// Keeps apart what was loaded already: two paths may name one library.
class Loader
{
public:
    std::shared_ptr<Backend> load(const QString& path, QString& reason)
    {
        const QFileInfo file(path);
        if (!file.exists())
            reason = QStringLiteral("there is no such file");
        else if (!file.isFile())
            reason = QStringLiteral("it is no file");
        if (!reason.isEmpty())
            return nullptr;
        // All symbols now: a missing one is told here and not in the middle of a recording.
        void* const library = dlopen(QFile::encodeName(path).constData(), RTLD_NOW | RTLD_LOCAL);
        if (!library) {
            reason = loaderError(path);
            return nullptr;
        }
        if (std::find(libraries.begin(), libraries.end(), library) != libraries.end()) {
            reason = QStringLiteral("it is named twice");
            return nullptr;
        }
        libraries.push_back(library);
        return ask(library, reason);
    }

private:
    static std::shared_ptr<Backend> ask(void* library, QString& reason)
    {
        const auto version = reinterpret_cast<VersionFunction*>(dlsym(library, "korvane_backend_version"));
        if (!version) {
            reason = QStringLiteral("it lacks the symbol korvane_backend_version");
            return nullptr;
        }
        const int found = version();
        if (found != KORVANE_BACKEND_VERSION) {
            reason = QStringLiteral("it is made for version %1 of the boundary, this program has version %2")
                         .arg(found)
                         .arg(KORVANE_BACKEND_VERSION);
            return nullptr;
        }
        const auto entry = reinterpret_cast<CreateFunction*>(dlsym(library, "korvane_create_backend"));
        if (!entry) {
            reason = QStringLiteral("it lacks the symbol korvane_create_backend");
            return nullptr;
        }
        return create(entry, reason);
    }

    std::vector<void*> libraries;
};

} // namespace

std::vector<std::shared_ptr<Backend>> loadBackendLibraries(const QString& paths)
{
    std::vector<std::shared_ptr<Backend>> backends;
    Loader loader;
    for (const QString& entry : paths.split(QLatin1Char(':'), Qt::SkipEmptyParts)) {
        // Absolute: a bare name would be looked for in the system's folders of libraries.
        const QString path = QFileInfo(entry).absoluteFilePath();
        QString reason;
        auto backend = loader.load(path, reason);
        if (backend) {
            qInfo().noquote().nospace()
                << path << ": gives the backend " << QString::fromLocal8Bit(backend->name().c_str());
            backends.push_back(std::move(backend));
        } else {
            qWarning().noquote().nospace() << path << ": is no backend that can be used: " << reason;
        }
    }
    return backends;
}

} // namespace korvane::plugins
