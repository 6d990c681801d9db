#include "tests/gui/imagecomparison.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QIcon>
#include <QImageReader>
#include <QMap>
#include <QPainter>
#include <QPixmap>
#include <QRegularExpression>
#include <QTextStream>

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString sources = QStringLiteral(RESOURCES_SOURCE_DIR);

/// Every resource address in forms, style sheets and code, with the first place that names it.
QMap<QString, QString> addressesInUse()
{
    static const QRegularExpression pattern(
        u"(?<![A-Za-z]):/(?!/)[A-Za-z0-9_%./ -]*?(?:\\.[a-z]+)(?=[\"')&<\\s])"_s);
    QMap<QString, QString> found;
    for (const QString& folder : {u"app"_s, u"camera"_s, u"display"_s, u"forms"_s, u"mainwindow"_s,
                                  u"playback"_s, u"settings"_s, u"widgets"_s, u"resources"_s}) {
        QDirIterator files(sources + u'/' + folder, {u"*.cpp"_s, u"*.h"_s, u"*.ui"_s, u"*.css"_s},
                           QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            if (!file.open(QIODevice::ReadOnly))
                continue;
            auto matches = pattern.globalMatch(QString::fromUtf8(file.readAll()));
            while (matches.hasNext()) {
                const QString address = matches.next().captured();
                if (!found.contains(address))
                    found.insert(address, files.filePath());
            }
        }
    }
    return found;
}

/// The embedded files that an address stands for: itself, or what its places (%1) can be filled with.
QStringList embeddedFiles(const QString& address)
{
    if (!address.contains(u'%'))
        return QFile::exists(address) ? QStringList{address} : QStringList{};
    static const QRegularExpression place(u"%[0-9]"_s);
    const QString name = address.section(u'/', -1);
    const QString folder = address.chopped(name.size());
    QStringList files = QDir(folder).entryList({QString(name).replace(place, u"*"_s)}, QDir::Files);
    for (QString& file : files)
        file.prepend(folder);
    return files;
}

QStringList imagesInUse()
{
    QStringList images;
    const QMap<QString, QString> addresses = addressesInUse();
    for (const QString& address : addresses.keys()) {
        if (address.startsWith(u":/img/"_s))
            images << embeddedFiles(address);
    }
    images.removeDuplicates();
    return images;
}

/// The image as a widget of the image's own size shows it. Qt looks for the "@2x" file of a bitmap itself,
/// but only where the application runs on a dense screen.
QImage shown(const QString& image, double ratio)
{
    const QSize size = QImageReader(image).size();
    if (ratio > 1 && image.endsWith(u".png"_s))
        return QImage(QString(image).replace(u".png"_s, u"@2x.png"_s));
    QImage drawn = QIcon(image).pixmap(size, ratio).toImage();
    drawn.setDevicePixelRatio(1.0);
    return drawn;
}

} // namespace

TEST(Addresses, AreFoundInFormsAndCode)
{
    const QMap<QString, QString> addresses = addressesInUse();
    EXPECT_TRUE(addresses.contains(u":/img/assets/btn_playbar_play.svg"_s)); // a form's style sheet
    EXPECT_TRUE(addresses.contains(u":/img/assets/bnt_arrow_down.svg"_s)); // a form's icon set
    EXPECT_TRUE(addresses.contains(u":/img/assets/btn_switch_enable.svg"_s)); // a style sheet in code
    EXPECT_TRUE(addresses.contains(u":/img/icon/waiting.gif"_s));
    EXPECT_TRUE(addresses.contains(u":/img/assets/Korvane logo_navigate.png"_s)); // a name with a blank
    EXPECT_TRUE(addresses.contains(u":/img/assets/btn_playbar_%1_hover.svg"_s)); // a name filled in later
}

TEST(Addresses, AllLeadToAnEmbeddedFile)
{
    // Qt's own Chinese is embedded where the machine that builds has it.
    const QString optional = u":/qtbase_zh_CN.qm"_s;
    QMap<QString, QString> addresses = addressesInUse();
    EXPECT_EQ(addresses.remove(optional), 1);
    for (auto entry = addresses.begin(); entry != addresses.end(); ++entry)
        EXPECT_FALSE(embeddedFiles(entry.key()).isEmpty())
            << entry.key().toStdString() << " in " << entry.value().toStdString();
}

TEST(Addresses, AllOfImagesRenderAtEveryDensity)
{
    const QStringList images = imagesInUse();
    ASSERT_GE(images.size(), 40);
    for (const QString& image : images) {
        for (const double ratio : {1.0, 1.5, 2.0}) {
            const QImage drawn = shown(image, ratio);
            ASSERT_FALSE(drawn.isNull()) << image.toStdString() << " at " << ratio;
            EXPECT_GE(differingPart(drawn, clearImage(drawn.size()), differsVisibly), 0.02)
                << image.toStdString() << " at " << ratio;
        }
    }
}

TEST(Addresses, AllOfImagesGainDetailOnADenseScreen)
{
    for (const QString& image : imagesInUse()) {
        // The spinner is made at the density of dense screens and shown reduced elsewhere.
        if (image.endsWith(u".gif"_s))
            continue;
        const QImage plain = shown(image, 1.0);
        const QImage dense = shown(image, 2.0);
        ASSERT_EQ(dense.size(), plain.size() * 2) << image.toStdString();
        const QImage enlarged = plain.scaled(dense.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        EXPECT_GE(differingPart(dense, enlarged, differsVisibly), 0.002) << image.toStdString();
    }
}
