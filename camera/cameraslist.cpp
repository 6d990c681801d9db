#include "camera/cameraslist.h"

#include "camera/driver/cameradescription.h"
#include "widgets/framelesscard.h"

#include "ui_camerslist.h"

#include <QIcon>
#include <QKeyEvent>
#include <QListWidgetItem>

using namespace Qt::Literals::StringLiterals;

CamerasList::CamerasList(const std::vector<korvane::CameraDescription>& descs, QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::CamerasList>())
{
    ui->setupUi(this);
    makeFramelessCard(this, ui->widget_title_name);

    connect(ui->pb_open, &QPushButton::clicked, this, &CamerasList::accept);
    connect(ui->pb_close, &QPushButton::clicked, this, &CamerasList::reject);
    connect(ui->listWidget_cameras, &QListWidget::itemDoubleClicked, this, &CamerasList::accept);

    ui->listWidget_cameras->setIconSize(QSize(24, 24));
    QIcon icon(u":/img/assets/btn_camera.svg"_s);
    icon.addFile(u":/img/assets/btn_camera_Selected.svg"_s, QSize(), QIcon::Selected);
    for (const korvane::CameraDescription& desc : descs)
        ui->listWidget_cameras->addItem(new QListWidgetItem(icon, QString::fromLocal8Bit(desc.serial)));
    ui->listWidget_cameras->setCurrentRow(0);
    ui->listWidget_cameras->setFocus();
}

CamerasList::~CamerasList() = default;

bool CamerasList::selectedIndex(std::uint32_t& index) const
{
    const int row = ui->listWidget_cameras->currentRow();
    if (row < 0)
        return false;
    index = static_cast<std::uint32_t>(row);
    return true;
}

void CamerasList::accept()
{
    QDialog::accept();
}

void CamerasList::keyPressEvent(QKeyEvent* event)
{
    // The search field does nothing, and pressing Return in it is no choice of a camera.
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (isReturn && ui->le_search_camera->hasFocus())
        return;
    QDialog::keyPressEvent(event);
}

void CamerasList::on_pb_win_close_clicked()
{
    close();
}
