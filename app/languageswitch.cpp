#include "app/languageswitch.h"

#include "app/config.h"
#include "widgets/kvmessagebox.h"

#include <QApplication>
#include <QDebug>
#include <QProcess>

#include <utility>

LanguageSwitch::LanguageSwitch(Config& settings, Starter startProgram)
    : config(settings), starter(std::move(startProgram))
{
}

void LanguageSwitch::ask() const
{
    KVMessageBox box(tr("The language change will take effect after restart."), tr("Tips"), tr("Restart"),
                     tr("Later"), nullptr);
    if (box.exec() != QDialog::Accepted)
        return;
    config.language = config.language == QStringLiteral("en") ? QStringLiteral("zh") : QStringLiteral("en");
    config.save();
    QApplication::closeAllWindows();
    const QString program = QCoreApplication::applicationFilePath();
    if (!starter(program))
        qWarning().noquote() << program << "cannot be started again.";
}

bool LanguageSwitch::startDetached(const QString& program)
{
    return QProcess::startDetached(program, QStringList(), QString());
}
