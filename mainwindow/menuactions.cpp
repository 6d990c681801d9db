#include "mainwindow/menuactions.h"

#include "app/config.h"
#include "app/productinfo.h"
#include "widgets/kvmessagebox.h"

#include <QApplication>
#include <QDesktopServices>
#include <QProcess>
#include <QUrl>

void MenuActions::askAboutUs()
{
    KVMessageBox box(tr("Is it open in the browser?"), tr("Tips"), tr("Open"), tr("Close"), nullptr);
    if (box.exec() == QDialog::Accepted)
        QDesktopServices::openUrl(QUrl(QString(productinfo::webAddress)));
}

void MenuActions::askLanguageSwitch(Config& config)
{
    KVMessageBox box(tr("The language change will take effect after restart."), tr("Tips"), tr("Restart"),
                     tr("Later"), nullptr);
    if (box.exec() != QDialog::Accepted)
        return;
    config.language = config.language == QStringLiteral("en") ? QStringLiteral("zh") : QStringLiteral("en");
    config.save();
    QApplication::closeAllWindows();
    QProcess::startDetached(QCoreApplication::applicationFilePath(), QStringList());
}
