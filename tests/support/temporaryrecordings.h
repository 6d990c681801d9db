#pragma once

#include "camera/recording/rawfilereader.h"
#include "tests/support/evtwriter.h"

#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <memory>
#include <stdexcept>
#include <string>

/// Recordings written for a test, in a folder that goes with it.
class TemporaryRecordings
{
public:
    /// The path, in the local 8-bit encoding, of a new file with this content.
    std::string write(const std::string& name, const std::string& header, const evt::Bytes& body) const
    {
        const QString path = folder.filePath(QString::fromStdString(name));
        if (!evt::writeFile(path, header, body))
            throw std::runtime_error("cannot write " + path.toStdString());
        return QFile::encodeName(path).toStdString();
    }

    std::string path(const std::string& name) const
    {
        return QFile::encodeName(folder.filePath(QString::fromStdString(name))).toStdString();
    }

    /// A header as writers of today make it.
    static std::string header(korvane::recording::EvtEncoding encoding,
                              korvane::recording::Geometry geometry = {640, 480})
    {
        using korvane::recording::EvtEncoding;
        const std::string size
            = ";height=" + std::to_string(geometry.height) + ";width=" + std::to_string(geometry.width);
        switch (encoding) {
        case EvtEncoding::Evt2:
            return "% format EVT2" + size + "\n% end\n";
        case EvtEncoding::Evt21:
            return "% format EVT21;endianness=little" + size + "\n% end\n";
        case EvtEncoding::Evt21Legacy:
            return "% format EVT21;endianness=legacy" + size + "\n% end\n";
        case EvtEncoding::Evt3:
            break;
        }
        return "% format EVT3" + size + "\n% end\n";
    }

    /// A loaded reader of the file, or nothing.
    static std::unique_ptr<korvane::recording::RawFileReader> load(const std::string& path)
    {
        QString error;
        auto reader = korvane::recording::RawFileReader::open(path, error);
        return reader && reader->loadFile() ? std::move(reader) : nullptr;
    }

private:
    QTemporaryDir folder;
};
