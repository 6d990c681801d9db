#pragma once

#include <QDialog>

#include <cstdint>
#include <memory>
#include <vector>

namespace korvane {
struct CameraDescription;
}

namespace Ui {
class CamerasList;
}

/// The modal dialog that offers the cameras found and opens none itself. GUI thread only.
class CamerasList : public QDialog
{
    Q_OBJECT

public:
    /// One row per description, in their order; the first is preselected. Run with exec(): non-zero means
    /// accepted, which with no cameras comes without a selection.
    CamerasList(const std::vector<korvane::CameraDescription>& descs, QWidget* parent);
    ~CamerasList() override;

    /// Sets `index` to the chosen place in the vector given to the constructor. False, leaving `index` as it
    /// is, when no row is chosen.
    bool selectedIndex(std::uint32_t& index) const;

public slots:
    void accept() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private slots:
    void on_pb_win_close_clicked();

private:
    std::unique_ptr<Ui::CamerasList> ui;
};
