#include "widgets/popwidget.h"

#include "ui_popwidget.h"

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
