#include "app/configfile.h"

#include <QDebug>
#include <QFile>
#include <QRegularExpression>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr qint64 mostBytes = 1024 * 1024;

/// Whether no value is a serialised object. The reader of INI files makes objects of texts like
/// "@Variant(...)", and takes as much memory as they ask for; we write texts only. Such a text may stand for
/// itself or in a list, in quotes, and its '@' may be written by its number. "@@" is a text that begins with
/// '@'.
bool holdsTextsOnly(const QString& content)
{
    static const QRegularExpression object(
        uR"([=,][\s"]*@(?!@|Invalid\(\)|ByteArray\(|String\(|Rect\(|Size\(|Point\())"_s);
    static const QRegularExpression hidden(uR"(\\x0*40(?![0-9A-Fa-f])|\\0*100(?![0-7]))"_s);
    return !object.match(content).hasMatch() && !hidden.match(content).hasMatch();
}

bool isUsable(const QString& path)
{
    QFile file(path);
    // What cannot be read is nothing to the reader either.
    if (!file.open(QIODevice::ReadOnly))
        return true;
    return file.size() <= mostBytes && holdsTextsOnly(QString::fromLatin1(file.readAll()));
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
