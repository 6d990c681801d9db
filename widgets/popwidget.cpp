#include "widgets/popwidget.h"

#include "widgets/roundedregion.h"

#include "ui_popwidget.h"

#include <QPainter>

namespace {

constexpr int cornerRadius = 6;

} // namespace

PopWidget::PopWidget(QWidget* parent) : QWidget(parent), ui(std::make_unique<Ui::PopWidget>())
{
    ui->setupUi(this);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_QuitOnClose, false);
}

PopWidget::~PopWidget() = default;

void PopWidget::addWidget(QWidget* widget)
{
    ui->verticalLayout->addWidget(widget);
}

void PopWidget::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    setMask(roundedRegion(size(), cornerRadius));
}

void PopWidget::paintEvent(QPaintEvent*)
{
    // Under the body's smoothed corners, where no compositor would mix them with what lies behind.
    QPainter painter(this);
    for (const QRect& part : roundedRegion(size(), cornerRadius))
        painter.fillRect(part, QColor(0xE8, 0xEF, 0xF1));
}
