#include "mainwindow/menuactions.h"

#include "app/kvgeneralsetting.h"
#include "app/productinfo.h"
#include "widgets/kvmessagebox.h"

#include <QDesktopServices>
#include <QUrl>

void MenuActions::askAboutUs()
{
    KVMessageBox box(tr("Is it open in the browser?"), tr("Tips"), tr("Open"), tr("Close"), nullptr);
    if (box.exec() == QDialog::Accepted)
        QDesktopServices::openUrl(QUrl(QString(productinfo::webAddress)));
}

void MenuActions::changeGeneralSettings(QWidget* parent)
{
    KvGeneralSetting dialog(parent);
    dialog.exec();
}
