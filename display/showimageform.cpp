#include "display/showimageform.h"

#include "ui_showimageform.h"

#include <QGraphicsPixmapItem>

#include <utility>

ShowImageForm::ShowImageForm(QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::ShowImageForm>()), pixmap(pixmapWidth, pixmapHeight)
{
    ui->setupUi(this);
    pixmap.fill(QColor(QStringLiteral("#707070")));
    pixmapItem = scene.addPixmap(pixmap);
    ui->graphicsView->setScene(&scene);
    ui->graphicsView->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    ui->graphicsView->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // A focused view would eat the arrow keys that step through a recording.
    ui->graphicsView->setFocusPolicy(Qt::NoFocus);
}

ShowImageForm::~ShowImageForm()
{
    ui->graphicsView->setScene(nullptr);
}

void ShowImageForm::showPixMap(QPixmap newPixmap)
{
    pixmap = std::move(newPixmap);
    pixmapItem->setPixmap(pixmap);
}

void ShowImageForm::slotShowImage(QImage image)
{
    showPixMap(QPixmap::fromImage(std::move(image)));
}

void ShowImageForm::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    fit();
}

void ShowImageForm::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    fit();
}

void ShowImageForm::fit()
{
    if (!pixmap.isNull())
        ui->graphicsView->fit(pixmapItem);
}
