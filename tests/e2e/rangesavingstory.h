#pragma once

#include "app/config.h"
#include "camera/driver/dvsfilereader.h"
#include "playback/kvcutrawfile.h"
#include "playback/kvexportvideoui.h"
#include "tests/e2e/windowstory.h"
#include "tests/support/scripteddialogs.h"

#include <QLineEdit>

#include <type_traits>
#include <vector>

/// Saves ranges of recordings with the dialogs, into an empty folder.
class RangeSavingStory : public WindowStory
{
protected:
    using WindowStory::WindowStory;

    void SetUp() override
    {
        WindowStory::SetUp();
        QDir::current().mkpath(QStringLiteral("out"));
        folder = QDir::current().filePath(QStringLiteral("out"));
        Config* const config = Config::getInstance(QStringLiteral("config.ini"));
        config->output_raw_file_path = folder;
        config->video_save_path = folder;
    }
    void TearDown() override
    {
        QDir(folder).removeRecursively();
        WindowStory::TearDown();
    }
    void openPaused(const QString& recording)
    {
        window->openRecording(recording);
        ASSERT_TRUE(wait([this] { return button("pb_play")->isChecked(); }));
        click("pb_play");
        click("pb_stop");
    }
    /// Picks the item, changes what the dialog says, and confirms it.
    template <typename Dialog>
    void save(const std::function<void(Dialog& dialog)>& change)
    {
        ScriptedPerson person([&change](QWidget& modal) {
            auto* const dialog = qobject_cast<Dialog*>(&modal);
            if (!dialog)
                return false;
            change(*dialog);
            QTest::mouseClick(dialog->template findChild<QPushButton*>(QStringLiteral("pb_save")),
                              Qt::LeftButton);
            return true;
        });
        pick("menu_file",
             std::is_same_v<Dialog, KvCutRawFile> ? QStringLiteral("Cut Recording")
                                                  : QStringLiteral("Save as..."));
        EXPECT_TRUE(person.isDone());
        QCoreApplication::processEvents();
    }
    QStringList files() const { return QDir(folder).entryList(QDir::Files | QDir::Hidden); }
    /// The texts of the toasts on the screen.
    static QStringList toasts()
    {
        QStringList texts;
        for (const QWidget* toast : QApplication::topLevelWidgets()) {
            if (!toast->inherits("KvFilePathReminderForm"))
                continue;
            for (const QLabel* label : toast->findChildren<QLabel*>())
                texts << label->text();
        }
        return texts;
    }
    static std::vector<korvane::Event2D> eventsOf(const QString& recording)
    {
        const auto reader = korvane::DvsFileReader::createFileReader(recording.toLocal8Bit().toStdString());
        if (!reader || !reader->loadFile())
            return {};
        const auto events = reader->getEventsAt(0, ~std::uint64_t(0));
        return events ? *events : std::vector<korvane::Event2D>();
    }

    QString folder;
};
