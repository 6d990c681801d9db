#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class AboutUSForm;
}

/// An empty form, kept for a page about the product; nothing opens it yet. GUI thread.
class AboutUSForm : public QDialog
{
    Q_OBJECT

public:
    explicit AboutUSForm(QWidget* parent);
    ~AboutUSForm() override;

private:
    std::unique_ptr<Ui::AboutUSForm> ui;
};
