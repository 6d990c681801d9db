#pragma once

#include "camera/recording/rawfilereader.h"
#include "tests/e2e/livestoryfixture.h"
#include "tests/support/scripteddialogs.h"
#include "widgets/kvfilepathreminderform.h"

#include <QFileInfo>

#include <cstdint>

// A busy machine makes the stream late: less of it than of the clock's second may be in a file.
inline constexpr std::uint64_t someTime = 100000; // microseconds

/// Records cameras with the buttons of the window, into an empty folder.
class RecordingStory : public LiveStory
{
protected:
    void SetUp() override
    {
        QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
        LiveStory::SetUp();
        folder.removeRecursively();
    }

    void click(const char* name) const { QTest::mouseClick(button(name), Qt::LeftButton); }

    /// Opens the menu of a button with the mouse and clicks its first entry.
    void chooseFirstOf(const char* menuButton) const
    {
        QTimer::singleShot(50, button(menuButton), [this, menuButton] {
            QMenu* const menu = button(menuButton)->menu();
            EXPECT_TRUE(menu->isVisible());
            QTest::mouseClick(menu, Qt::LeftButton, {},
                              menu->actionGeometry(menu->actions().constFirst()).center());
        });
        click(menuButton);
    }

    /// Opens the first camera of the list with the mouse and waits until it is seen.
    void openCamera()
    {
        ScriptedPerson person([](QWidget& modal) {
            if (!modal.findChild<QListWidget*>(QStringLiteral("listWidget_cameras")))
                return false;
            QTest::mouseClick(modal.findChild<QPushButton*>(QStringLiteral("pb_open")), Qt::LeftButton);
            return true;
        });
        chooseFirstOf("pb_menu_device");
        ASSERT_TRUE(wait([this, &person] {
            return person.isDone() && button("pb_play")->isChecked() && eventPixels() > 500;
        }));
    }
    void startRecording()
    {
        click("pb_record");
        ASSERT_TRUE(button("pb_record")->isChecked());
        EXPECT_EQ(text("lb_recoding_time"), QStringLiteral("00:00"));
        ASSERT_TRUE(wait([this] { return text("lb_recoding_time") == QStringLiteral("00:01"); }));
    }

    QStringList files() const { return folder.entryList({QStringLiteral("*.raw")}, QDir::Files, QDir::Time); }
    /// The toasts that stand on the screen.
    static QStringList toasts()
    {
        QStringList texts;
        for (const QWidget* const widget : QApplication::topLevelWidgets()) {
            const auto* const tips = widget->findChild<QLabel*>(QStringLiteral("lb_show_tips"));
            if (qobject_cast<const KvFilePathReminderForm*>(widget) && tips && widget->isVisible())
                texts << tips->text();
        }
        return texts;
    }
    /// The one recording there is holds at least this much time, up to its last byte.
    void expectAWholeRecording(std::uint64_t microseconds) const
    {
        ASSERT_EQ(files().size(), 1);
        QString error;
        const auto reader = korvane::recording::RawFileReader::open(
            folder.filePath(files().constFirst()).toLocal8Bit().toStdString(), error);
        ASSERT_TRUE(reader && reader->loadFile()) << error.toStdString();
        std::uint64_t start = 0;
        std::uint64_t end = 0;
        reader->getStartTimestamp(start);
        reader->getEndTimestamp(end);
        EXPECT_GT(end - start, microseconds);
        EXPECT_EQ(reader->metCounts(), korvane::recording::EvtCounts());
        EXPECT_EQ(QFileInfo(folder.filePath(files().constFirst())).size()
                      % static_cast<qint64>(wordSize(reader->encoding())),
                  static_cast<qint64>(reader->fileHeader().bodyOffset % wordSize(reader->encoding())));
        EXPECT_EQ(reader->sensorGeometry(), (korvane::recording::Geometry{1280, 720}));
    }

    QDir folder{Config::getInstance(QStringLiteral("config.ini"))->output_raw_file_path};
};
