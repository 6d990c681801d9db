#pragma once

#include <QDialog>
#include <QString>

#include <cstdint>
#include <memory>

namespace Ui {
class KvCutRawFile;
}

/// Asks for the range, the folder and the name of a recording to be cut out. It checks nothing of what is
/// typed. GUI thread.
class KvCutRawFile : public QDialog
{
    Q_OBJECT

public:
    explicit KvCutRawFile(QWidget* parent);
    ~KvCutRawFile() override;

    /// Microseconds. A text that is no number is read as 0.
    void setStartTime(std::uint64_t time);
    void setEndTime(std::uint64_t time);
    std::uint64_t startTime() const;
    std::uint64_t endTime() const;

    void setSavePath(const QString& folder);
    void setFileName(const QString& name);
    QString savePath() const;
    /// Folder and file name, joined by a slash.
    QString fullPath() const;

private slots:
    void on_pb_save_clicked();
    void on_pb_cancel_clicked();
    void on_pb_win_close_clicked();
    void on_pb_select_dir_clicked();

private:
    std::unique_ptr<Ui::KvCutRawFile> ui;
};
