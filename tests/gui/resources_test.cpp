#include "tests/gui/imagecomparison.h"

#include <QDir>
#include <QFile>
#include <QFontDatabase>
#include <QIcon>
#include <QImage>
#include <QImageReader>
#include <QPainter>
#include <QPushButton>
#include <QRegularExpression>
#include <QSet>
#include <QSvgRenderer>
#include <QTranslator>
#include <QXmlStreamReader>

#include <map>
#include <vector>

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace {

/// A control's image, its states (suffixes of the file name) and the colour that it is shown on.
struct Family
{
    QString stem;
    QStringList states;
    QColor ground;
};

const QColor titleBar(0xFA, 0xFA, 0xFA);
const QColor accentHeader(0x00, 0x4B, 0x6A);
const QColor foldStrip(0xF1, 0xF4, 0xF6);
const QColor playBar(0xFF, 0xFF, 0xFF);
const QColor editorBox(0xF7, 0xF7, 0xF7);
const QColor dialogBody(0xFF, 0xFF, 0xFF);

const std::vector<Family>& families()
{
    static const QStringList pressable{u"_Hover"_s, u"_Pressed"_s};
    static const QStringList viewType{u"_hover"_s, u"_disable"_s};
    static const std::vector<Family> all{
        {u"btn_Nav_MinimizeWindow"_s, pressable, titleBar},
        {u"btn_Nav_MaximizeWindow"_s, pressable, titleBar},
        {u"btn_Nav_CloseWindow"_s, pressable, titleBar},
        {u"btn_Nav_CloseWindow_White"_s, pressable, accentHeader},
        {u"btn_sidebar_camera"_s, {u"_hover"_s}, foldStrip},
        {u"btn_sidebar_DVS"_s, {u"_hover"_s}, foldStrip},
        {u"btn_sidebar_APS"_s, {u"_hover"_s}, foldStrip},
        {u"btn_sidebar_setting"_s, {u"_hover"_s}, foldStrip},
        {u"btn_playbar_DVS"_s, viewType, playBar},
        {u"btn_playbar_APS"_s, viewType, playBar},
        {u"btn_playbar_Fusion"_s, viewType, playBar},
        {u"btn_playbar_record"_s, {u"_Hover"_s, u"_Pressed"_s, u"_Disable"_s}, playBar},
        {u"btn_playbar_backward"_s, {u"_Hover"_s, u"_Disable"_s}, playBar},
        {u"btn_playbar_play"_s, {u"_Hover"_s, u"_Pressed"_s, u"_Disable"_s}, playBar},
        {u"btn_playbar_pause"_s, pressable, playBar},
        {u"btn_playbar_stop"_s, {u"_Hover"_s, u"_Pressed"_s, u"_Disable"_s}, playBar},
        {u"btn_playbar_forward"_s, {u"_Hover"_s, u"_Disable"_s}, playBar},
        {u"btn_playbar_loop"_s, {u"_Selected"_s, u"_Hover"_s, u"_Pressed"_s, u"_Disable"_s}, playBar},
        {u"btn_playbar_setting"_s, {u"_pressed"_s}, playBar},
        {u"btn_search"_s, {u"_Hover"_s}, dialogBody},
        {u"btn_select_dir"_s, pressable, dialogBody},
        {u"btn_combobox_arrow"_s, {u"_Hover"_s, u"_Disable"_s}, dialogBody},
        {u"btn_setting_minus"_s, {u"_pressed"_s}, editorBox},
        {u"btn_setting_plus"_s, {u"_pressed"_s}, editorBox},
    };
    return all;
}

QStringList imageNames()
{
    QStringList names{
        u"img_logo_Korvane.svg"_s,   u"Korvane logo_navigate.png"_s, u"Korvane logo_ system-version.png"_s,
        u"btn_camera.svg"_s,         u"btn_camera_Selected.svg"_s,   u"btn_setting_thumbs.svg"_s,
        u"btn_switch_disable.svg"_s, u"btn_switch_enable.svg"_s,     u"bnt_arrow_up_Pressed.svg"_s,
        u"bnt_arrow_down.svg"_s,     u"icon_toasts_success.svg"_s,   u"icon_toasts_warning.svg"_s,
        u"icon_toasts_error.svg"_s,  u"icon_toasts_close.svg"_s};
    for (const Family& family : families()) {
        names << family.stem + u".svg"_s;
        for (const QString& state : family.states)
            names << family.stem + state + u".svg"_s;
    }
    names.sort();
    return names;
}

QStringList svgNames()
{
    return imageNames().filter(QRegularExpression(u"\\.svg$"_s));
}

QString address(const QString& name)
{
    return u":/img/assets/"_s + name;
}

/// The image as a button shows it: drawn by QIcon, centred in a square.
QImage drawn(const QString& name, int side, const QColor& ground = Qt::transparent)
{
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(ground);
    QPainter painter(&image);
    QIcon(address(name)).paint(&painter, image.rect());
    return image;
}

QByteArray content(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList svgWarnings;

void collectWarning(QtMsgType, const QMessageLogContext&, const QString& text)
{
    svgWarnings << text;
}

} // namespace

TEST(Images, ExactlyTheKnownNamesAreEmbedded)
{
    QStringList expected = imageNames();
    expected << u"Korvane logo_navigate@2x.png"_s << u"Korvane logo_ system-version@2x.png"_s;
    QStringList found = QDir(u":/img/assets"_s).entryList(QDir::Files);
    expected.sort();
    found.sort();
    EXPECT_EQ(found.join(u'\n').toStdString(), expected.join(u'\n').toStdString());
}

TEST(Images, NoneIsBlankAtTwentyFourAndFortyEightPixels)
{
    for (const QString& name : imageNames()) {
        for (const int side : {24, 48}) {
            EXPECT_GE(differingPart(drawn(name, side), clearImage(QSize(side, side)), differsVisibly), 0.02)
                << name.toStdString() << " at " << side;
        }
    }
}

TEST(Images, EveryTwoOfDifferentNamesDifferInTwoPercentOfThePixels)
{
    QStringList names = imageNames();
    std::vector<QImage> images;
    for (const QString& name : std::as_const(names))
        images.push_back(drawn(name, 48));
    names << u"waiting.gif"_s;
    images.push_back(QImage(u":/img/icon/waiting.gif"_s)
                         .scaled(48, 48, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                         .convertToFormat(QImage::Format_ARGB32_Premultiplied));
    ASSERT_EQ(images.back().size(), QSize(48, 48));
    for (std::size_t first = 0; first < images.size(); ++first) {
        for (std::size_t second = first + 1; second < images.size(); ++second) {
            EXPECT_GE(differingPart(images[first], images[second], differsVisibly), 0.02)
                << names[qsizetype(first)].toStdString() << " and " << names[qsizetype(second)].toStdString();
        }
    }
}

TEST(Images, EveryStateIsToldFromTheOthersOfItsControlByLightnessAlone)
{
    for (const Family& family : families()) {
        QStringList names{family.stem + u".svg"_s};
        for (const QString& state : family.states)
            names << family.stem + state + u".svg"_s;
        for (qsizetype first = 0; first < names.size(); ++first) {
            for (qsizetype second = first + 1; second < names.size(); ++second) {
                const double part
                    = differingPart(drawn(names[first], 48, family.ground),
                                    drawn(names[second], 48, family.ground), differsInLightness);
                EXPECT_GE(part, 0.05) << names[first].toStdString() << " and " << names[second].toStdString();
            }
        }
    }
}

TEST(Images, OnAndOffOfTheSwitchAreToldApartByLightnessAlone)
{
    EXPECT_GE(differingPart(drawn(u"btn_switch_enable.svg"_s, 48, Qt::white),
                            drawn(u"btn_switch_disable.svg"_s, 48, Qt::white), differsInLightness),
              0.2);
    for (const QString& name : {u"btn_switch_enable.svg"_s, u"btn_switch_disable.svg"_s})
        EXPECT_EQ(QSvgRenderer(address(name)).defaultSize(), QSize(36, 20));
}

TEST(Images, KindsOfToastsFoldingsAndViewsAreToldApartByLightnessAlone)
{
    const std::vector<QStringList> groups{
        {u"icon_toasts_success.svg"_s, u"icon_toasts_warning.svg"_s, u"icon_toasts_error.svg"_s},
        {u"bnt_arrow_up_Pressed.svg"_s, u"bnt_arrow_down.svg"_s},
        {u"btn_playbar_play.svg"_s, u"btn_playbar_pause.svg"_s},
        {u"btn_playbar_DVS.svg"_s, u"btn_playbar_APS.svg"_s, u"btn_playbar_Fusion.svg"_s},
        {u"btn_sidebar_camera.svg"_s, u"btn_sidebar_DVS.svg"_s, u"btn_sidebar_APS.svg"_s,
         u"btn_sidebar_setting.svg"_s},
    };
    for (const QStringList& names : groups) {
        for (qsizetype first = 0; first < names.size(); ++first) {
            for (qsizetype second = first + 1; second < names.size(); ++second) {
                EXPECT_GE(differingPart(drawn(names[first], 48, Qt::white),
                                        drawn(names[second], 48, Qt::white), differsInLightness),
                          0.05)
                    << names[first].toStdString() << " and " << names[second].toStdString();
            }
        }
    }
}

TEST(Images, VectorsAreReadWithoutAWarning)
{
    for (const QString& name : svgNames()) {
        svgWarnings.clear();
        const QtMessageHandler earlier = qInstallMessageHandler(collectWarning);
        const bool valid = QSvgRenderer(address(name)).isValid();
        const bool readable = QImageReader(address(name)).canRead();
        qInstallMessageHandler(earlier);
        EXPECT_TRUE(valid) << name.toStdString();
        EXPECT_TRUE(readable) << name.toStdString();
        EXPECT_TRUE(svgWarnings.isEmpty())
            << name.toStdString() << ": " << svgWarnings.join(u"; "_s).toStdString();
    }
}

TEST(Images, VectorsUseOnlyShapesThatLookTheSameEverywhere)
{
    const QSet<QString> elements{u"svg"_s, u"g"_s, u"path"_s, u"rect"_s, u"circle"_s};
    for (const QString& name : svgNames()) {
        QXmlStreamReader reader(content(address(name)));
        while (!reader.atEnd()) {
            if (reader.readNext() != QXmlStreamReader::StartElement)
                continue;
            EXPECT_TRUE(elements.contains(reader.name().toString()))
                << name.toStdString() << ": " << reader.name().toString().toStdString();
            for (const QLatin1StringView attribute : {"class"_L1, "style"_L1, "filter"_L1, "mask"_L1})
                EXPECT_FALSE(reader.attributes().hasAttribute(attribute)) << name.toStdString();
            // Elliptic arcs are no part of SVG Tiny.
            const QString outline = reader.attributes().value("d"_L1).toString();
            EXPECT_FALSE(outline.contains(u'A', Qt::CaseInsensitive)) << name.toStdString();
        }
        EXPECT_FALSE(reader.hasError()) << name.toStdString();
    }
}

TEST(Images, LogosHaveTheirSizesAndTwiceThemForDenseScreens)
{
    EXPECT_EQ(QImage(address(u"Korvane logo_navigate.png"_s)).size(), QSize(256, 256));
    EXPECT_EQ(QImage(address(u"Korvane logo_navigate@2x.png"_s)).size(), QSize(512, 512));
    EXPECT_EQ(QImage(address(u"Korvane logo_ system-version.png"_s)).size(), QSize(136, 150));
    EXPECT_EQ(QImage(address(u"Korvane logo_ system-version@2x.png"_s)).size(), QSize(272, 300));
}

TEST(Images, VectorsUseTheColoursOfTheWindowsAndOneStroke)
{
    const QSet<QString> palette{u"#004B6A"_s, u"#2C6580"_s, u"#002D40"_s, u"#575757"_s, u"#808080"_s,
                                u"#C7C7C7"_s, u"#D7E7EE"_s, u"#EDF1F3"_s, u"#FF6058"_s, u"#FFDAD8"_s,
                                u"#58DB6D"_s, u"#F9BF37"_s, u"#FFFFFF"_s, u"none"_s};
    for (const QString& name : svgNames()) {
        QXmlStreamReader reader(content(address(name)));
        while (!reader.atEnd()) {
            if (reader.readNext() != QXmlStreamReader::StartElement)
                continue;
            for (const QLatin1StringView paint : {"fill"_L1, "stroke"_L1}) {
                if (reader.attributes().hasAttribute(paint)) {
                    EXPECT_TRUE(palette.contains(reader.attributes().value(paint).toString()))
                        << name.toStdString() << ": "
                        << reader.attributes().value(paint).toString().toStdString();
                }
            }
            if (reader.attributes().hasAttribute("stroke-width"_L1)) {
                EXPECT_EQ(reader.attributes().value("stroke-width"_L1).toString().toStdString(), "1.8")
                    << name.toStdString();
            }
        }
    }
}

TEST(Images, OfThePlayBarFallBetweenThePixelsOfTheirButtons)
{
    const QColor tile(0x2C, 0x65, 0x80);
    for (const int scale : {1, 2}) { // 40 pixels, and 80 on a dense screen
        const QImage shown = drawn(u"btn_playbar_pause_Pressed.svg"_s, 40 * scale, playBar);
        const int middle = 20 * scale;
        EXPECT_EQ(shown.pixelColor(2 * scale - 1, middle), playBar) << scale;
        EXPECT_EQ(shown.pixelColor(2 * scale, middle), tile) << scale;
        EXPECT_EQ(shown.pixelColor(38 * scale - 1, middle), tile) << scale;
        EXPECT_EQ(shown.pixelColor(38 * scale, middle), playBar) << scale;
        for (const int left : {11, 23}) { // the two bars, six pixels wide
            EXPECT_EQ(shown.pixelColor(left * scale - 1, middle), tile) << scale;
            EXPECT_EQ(shown.pixelColor(left * scale, middle), QColor(Qt::white)) << scale;
            EXPECT_EQ(shown.pixelColor((left + 6) * scale - 1, middle), QColor(Qt::white)) << scale;
            EXPECT_EQ(shown.pixelColor((left + 6) * scale, middle), tile) << scale;
        }
    }
}

TEST(Images, AStyleSheetScalesAnImageToItsButton)
{
    QPushButton button;
    button.setFixedSize(40, 40);
    button.setStyleSheet(u"QPushButton { border: none; background: #FFFFFF;"
                         " image: url(:/img/assets/btn_playbar_play_Pressed.svg); }"_s);
    const QImage shown = button.grab().toImage();
    // The tile spans 1.2..22.8 of 24 units: 2 to 38 of 40 pixels.
    const QColor tile(0x2C, 0x65, 0x80);
    EXPECT_EQ(shown.pixelColor(20, 1), QColor(Qt::white));
    EXPECT_EQ(shown.pixelColor(20, 2), tile);
    EXPECT_EQ(shown.pixelColor(2, 20), tile);
    EXPECT_EQ(shown.pixelColor(37, 20), tile);
    EXPECT_EQ(shown.pixelColor(38, 20), QColor(Qt::white));
    EXPECT_EQ(shown.pixelColor(20, 37), tile);
    EXPECT_EQ(shown.pixelColor(20, 20), QColor(Qt::white));
}

TEST(Font, IsNotoSansSC)
{
    const int id = QFontDatabase::addApplicationFont(u":/font/NotoSansSC-Medium.ttf"_s);
    ASSERT_NE(id, -1);
    const QStringList names = QFontDatabase::applicationFontFamilies(id);
    ASSERT_FALSE(names.isEmpty());
    EXPECT_EQ(names.first().toStdString(), "Noto Sans SC");
}

TEST(TitleBarStyle, RoundsTheTopOnlyWhileTheWindowIsNotMaximised)
{
    const std::map<QString, QString> topRadius{{u":/windowbar/titlebar_normal.css"_s, u"6px"_s},
                                               {u":/windowbar/titlebar_maximized.css"_s, u"0px"_s}};
    for (const auto& [path, radius] : topRadius) {
        const QString sheet = QString::fromUtf8(content(path));
        EXPECT_TRUE(sheet.contains(u"border-top-left-radius: "_s + radius + u';')) << path.toStdString();
        EXPECT_TRUE(sheet.contains(u"border-top-right-radius: "_s + radius + u';')) << path.toStdString();
        EXPECT_TRUE(sheet.contains(u"border-bottom-left-radius: 0px;"_s)) << path.toStdString();
        EXPECT_TRUE(sheet.contains(u"border-bottom-right-radius: 0px;"_s)) << path.toStdString();
        EXPECT_FALSE(sheet.contains(u"background"_s)) << path.toStdString();
    }
}

TEST(TitleBarStyle, DrawsTheGreyLineAlongTheBottomOfTheTitleBarOnly)
{
    for (const QString& path :
         {u":/windowbar/titlebar_normal.css"_s, u":/windowbar/titlebar_maximized.css"_s}) {
        QWidget bar;
        bar.setObjectName(u"widget_title_bar"_s);
        bar.setFixedSize(200, 40);
        QWidget other(&bar);
        other.setFixedSize(200, 20);
        bar.setStyleSheet(QString::fromUtf8(content(path)));
        const QImage shown = bar.grab().toImage();
        EXPECT_EQ(shown.pixelColor(100, 39), QColor(0xAA, 0xAA, 0xAA)) << path.toStdString();
        EXPECT_NE(shown.pixelColor(100, 38), QColor(0xAA, 0xAA, 0xAA)) << path.toStdString();
        EXPECT_NE(shown.pixelColor(100, 19), QColor(0xAA, 0xAA, 0xAA)) << path.toStdString();
    }
}

TEST(Translations, BothLanguagesLoad)
{
    for (const QString& path : {u":/app_en.qm"_s, u":/app_zh.qm"_s}) {
        QTranslator translator;
        EXPECT_TRUE(translator.load(path)) << path.toStdString();
        EXPECT_FALSE(translator.isEmpty()) << path.toStdString();
    }
}
