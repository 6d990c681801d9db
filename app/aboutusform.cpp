#include "app/aboutusform.h"

#include "ui_aboutusform.h"

AboutUSForm::AboutUSForm(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::AboutUSForm>())
{
    ui->setupUi(this);
}

AboutUSForm::~AboutUSForm() = default;
