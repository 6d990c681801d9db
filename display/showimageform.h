#pragma once

#include <QGraphicsScene>
#include <QImage>
#include <QPixmap>
#include <QWidget>

#include <memory>

class QGraphicsPixmapItem;

namespace Ui {
class ShowImageForm;
}

/// The image area: shows the current picture, fitted, zoomed or moved. GUI thread; pictures from elsewhere
/// come by queued signals.
class ShowImageForm : public QWidget
{
    Q_OBJECT

public:
    explicit ShowImageForm(QWidget* parent = nullptr);
    ~ShowImageForm() override;

    const QPixmap& shownPixmap() const { return pixmap; }

public slots:
    /// Shows a picture; zoom and place of the view stay.
    void showPixMap(QPixmap pixmap);
    void slotShowImage(QImage image);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void fit();

    std::unique_ptr<Ui::ShowImageForm> ui;
    int pixmapWidth = 1280;
    int pixmapHeight = 720;
    QPixmap pixmap;
    QGraphicsScene scene;
    QGraphicsPixmapItem* pixmapItem; ///< the scene's
};
