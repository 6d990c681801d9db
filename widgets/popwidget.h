#pragma once

#include <QWidget>

#include <memory>

namespace Ui {
class PopWidget;
}

/// A small rounded container that floats beside another widget; its owner places, shows and deletes it. GUI
/// thread only.
class PopWidget : public QWidget
{
    Q_OBJECT

public:
    explicit PopWidget(QWidget* parent);
    ~PopWidget() override;

    /// Puts a widget below those already there and takes it over.
    void addWidget(QWidget* widget);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    std::unique_ptr<Ui::PopWidget> ui;
};
