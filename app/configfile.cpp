#include "app/configfile.h"

#include <QDebug>
#include <QFile>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryFile>

#include <algorithm>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qint64 mostBytes = 1024 * 1024;

// Stands for '@' where the settings are looked at before they are read; no text of a person holds it.
constexpr char mark = '\x01';

/// The reader of INI files makes objects of texts like "@Variant(...)", and takes as much memory as they ask
/// for. Texts begin otherwise, "@@" is one that begins with '@', and a few objects are harmless.
bool isText(const QString& value)
{
    static const QRegularExpression object(
        uR"(^\x01(?!\x01|Invalid\(\)|ByteArray\(|String\(|Rect\(|Size\(|Point\())"_s);
    return !object.match(value).hasMatch();
}

/// Whether no value is a serialised object; we write texts only. The reader itself tells where values and the
/// parts of lists begin, of a copy without '@', in which it sees no object.
bool holdsTextsOnly(QByteArray content)
{
    // Written by its number, in an odd number of backslashes' company.
    static const QRegularExpression hidden(uR"((?<!\\)(?:\\\\)*\\(?:x0*40(?![0-9A-Fa-f])|0*100(?![0-7])))"_s);
    if (hidden.match(QString::fromLatin1(content)).hasMatch())
        return false;
    if (!content.contains('@'))
        return true;
    QTemporaryFile copy;
    if (!copy.open() || copy.write(content.replace('@', mark)) != content.size() || !copy.flush())
        return false;
    const QSettings settings(copy.fileName(), QSettings::IniFormat);
    const QStringList keys = settings.allKeys();
    return std::all_of(keys.begin(), keys.end(), [&settings](const QString& key) {
        const QStringList values = settings.value(key).toStringList();
        return std::all_of(values.begin(), values.end(), isText);
    });
}

bool isUsable(const QString& path)
{
    QFile file(path);
    // What cannot be read is nothing to the reader either.
    if (!file.open(QIODevice::ReadOnly))
        return true;
    return file.size() <= mostBytes && holdsTextsOnly(file.readAll());
}

} // namespace

QString usableConfigFile(const QString& path)
{
    if (isUsable(path))
        return path;
    const QString aside = path + ".unusable"_L1;
    QFile::remove(aside);
    if (QFile::rename(path, aside)) {
        qWarning().noquote().nospace() << path << ": holds what no settings are; it is kept as " << aside;
        return path;
    }
    qWarning().noquote().nospace() << path << ": holds what no settings are; the defaults are taken";
    return path + ".new"_L1;
}
