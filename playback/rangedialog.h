#pragma once

#include <QDialog>
#include <QString>

#include <cstdint>

class QLineEdit;

/// What the dialogs for a range of a recording have in common: they ask for the range, a folder and a file
/// name, and check nothing of what is typed. Their forms differ. GUI thread.
class RangeDialog : public QDialog
{
    Q_OBJECT

public:
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

protected:
    explicit RangeDialog(QWidget* parent);

    /// Builds a designer form into this dialog. Its widgets bear the same names in every such form.
    template <typename Form>
    void setUp(Form& form)
    {
        form.setupUi(this);
        makeCard(form.widget_title_bar);
        fields = {form.le_start_time, form.le_end_time, form.le_save_file_path, form.le_file_name};
    }

private slots:
    void on_pb_save_clicked();
    void on_pb_cancel_clicked();
    void on_pb_win_close_clicked();
    void on_pb_select_dir_clicked();

private:
    struct Fields
    {
        QLineEdit* startTime = nullptr;
        QLineEdit* endTime = nullptr;
        QLineEdit* savePath = nullptr;
        QLineEdit* fileName = nullptr;
    };
    void makeCard(QWidget* titleBar);

    Fields fields;
};
