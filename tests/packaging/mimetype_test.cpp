#include "camera/recording/recorder.h"

#include <QDir>
#include <QFile>
#include <QMimeDatabase>
#include <QMimeType>
#include <gtest/gtest.h>

// Which program a double click opens, judged by the desktop's own database with our type among the others.

namespace {

constexpr const char* recordingType = "application/x-korvane-recording";

class MimeTypeOfRecordings : public testing::Test
{
protected:
    /// A database as the installed package leaves it: all types of the system, and ours among them.
    static void SetUpTestSuite() { qputenv("XDG_DATA_DIRS", KORVANE_MIME_DATA); }

    std::string typeOf(const char* name, const QByteArray& content) const
    {
        QFile file(QDir::current().filePath(QLatin1String(name)));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            return "not written";
        file.close();
        return QMimeDatabase().mimeTypeForFile(file.fileName()).name().toStdString();
    }
    static QByteArray words() { return {"\x00\x80\x01\x60\x02\x20\x00\x80\x01\x60\x02\x20", 12}; }
};

} // namespace

TEST_F(MimeTypeOfRecordings, ARecordingIsOneWithItsSuffixOrWithout)
{
    const QByteArray recording
        = QByteArray("% date 2023-03-29 16:37:46\n% evt 3.0\n% format EVT3;height=720;width=1280\n% end\n")
        + words();
    EXPECT_EQ(typeOf("take.raw", recording), recordingType);
    EXPECT_EQ(typeOf("take", recording), recordingType);
}

TEST_F(MimeTypeOfRecordings, OldHeadersWithoutAnEndAreKnownToo)
{
    EXPECT_EQ(typeOf("old.raw", QByteArray("% Date 2020-09-25 07:48:31\n% evt 2.0\n") + words()),
              recordingType);
    EXPECT_EQ(typeOf("bare.raw", QByteArray("% geometry 640x480\n% end\n") + words()), recordingType);
}

TEST_F(MimeTypeOfRecordings, WhatOurRecorderWritesIsOne)
{
    const std::string path
        = QFile::encodeName(QDir::current().filePath(QStringLiteral("ours.raw"))).toStdString();
    korvane::recording::Recorder recorder({1280, 720}, "HAL-000001");
    recorder.start(path);
    const korvane::Event2D event(7, 8, 1, 9);
    recorder.push(&event, &event + 1);
    recorder.stop();
    EXPECT_EQ(QMimeDatabase().mimeTypeForFile(QFile::decodeName(path.c_str())).name().toStdString(),
              recordingType);
}

TEST_F(MimeTypeOfRecordings, PhotosThatEndInRawStayPhotos)
{
    QByteArray photo("IIU\0\x08\0\0\0\x18\0\x01\0", 12);
    photo.append(4000, '\x55');
    EXPECT_EQ(typeOf("photo.raw", photo), "image/x-panasonic-rw");
}

TEST_F(MimeTypeOfRecordings, OtherTextsWithPercentSignsStayWhatTheyAre)
{
    EXPECT_EQ(typeOf("paper.tex", "% a comment\n\\documentclass{article}\n"), "text/x-tex");
    EXPECT_NE(typeOf("notes", "% evil is not a key\nand this is a text\n"), recordingType);
}
