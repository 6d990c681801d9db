#include "widgets/kvfilepathreminderform.h"

#include "widgets/cardcorners.h"

#include "ui_kvfilepathreminderform.h"

#include <QApplication>
#include <QDesktopServices>
#include <QTextBoundaryFinder>
#include <QTimer>
#include <QUrl>
#include <QWindow>

#include <algorithm>

namespace {

constexpr int lifetimeMs = 3000;
constexpr int cornerRadius = 3;
constexpr int preferredTextWidth = 360;

/// The text with break marks in the words that are wider than a line, such as a long file name.
QString breakable(const QString& text, const QFontMetrics& metrics, int lineWidth)
{
    constexpr QChar mark(0x200B); // zero width space
    QString result;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Line, text);
    for (qsizetype begin = 0, end = finder.toNextBoundary(); end >= 0;
         begin = end, end = finder.toNextBoundary()) {
        const QString word = text.mid(begin, end - begin);
        const bool tooWide = metrics.horizontalAdvance(word) > lineWidth;
        for (const QChar letter : word) {
            if (tooWide && !letter.isLowSurrogate())
                result += mark;
            result += letter;
        }
    }
    return result;
}

} // namespace

KvFilePathReminderForm::KvFilePathReminderForm(QString tips, KvMessageType type, QString file_path,
                                               QWidget* parent)
    : QWidget(parent), ui(std::make_unique<Ui::KvFilePathReminderForm>())
{
    ui->setupUi(this);
    setWindowFlags(Qt::FramelessWindowHint);
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setAttribute(Qt::WA_QuitOnClose, false);
    ui->lb_show_tips->setText(tips);
    if (file_path.isEmpty())
        ui->pb_open_dir->hide();
    applyLook(type);
    filePath = std::move(file_path);

    fitText();
    new CardCorners(this, cornerRadius);

    auto* timer = new QTimer(this);
    timer->start(lifetimeMs);
    timer->setSingleShot(true);
    connect(timer, &QTimer::timeout, this, &KvFilePathReminderForm::onTimeupDestroy);
    // It has no owner, and the program may end before its time is up.
    connect(qApp, &QCoreApplication::aboutToQuit, this, &QObject::deleteLater);
}

KvFilePathReminderForm::~KvFilePathReminderForm() = default;

void KvFilePathReminderForm::applyLook(KvMessageType type)
{
    // The form's style sheet has the colours and the icon of each kind.
    if (type == Warning) {
        ui->widget_item->setProperty("kind", QStringLiteral("warning"));
        ui->lb_title->setText(tr("Warning"));
    } else if (type == Error) {
        ui->widget_item->setProperty("kind", QStringLiteral("error"));
        ui->lb_title->setText(tr("Error"));
    }
}

void KvFilePathReminderForm::fitText()
{
    QLabel* label = ui->lb_show_tips;
    label->ensurePolished();
    const QFontMetrics metrics = label->fontMetrics();
    label->setText(breakable(label->text(), metrics, preferredTextWidth));
    const QRect space(0, 0, preferredTextWidth, QWIDGETSIZE_MAX);
    const QSize text = metrics.boundingRect(space, Qt::TextWordWrap, label->text()).size();
    label->setFixedSize(text.width() + 1, std::max(text.height(), metrics.height()));
    resize(sizeHint());
}

void KvFilePathReminderForm::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    // A window that is shown without being activated may be put below the active one, unless it belongs to
    // it.
    QWindow* window = windowHandle();
    const QWidget* active = QApplication::activeWindow();
    if (window != nullptr && window->transientParent() == nullptr && active != nullptr && active != this)
        window->setTransientParent(active->windowHandle());
}

void KvFilePathReminderForm::onTimeupDestroy()
{
    deleteLater();
}

void KvFilePathReminderForm::on_pb_open_dir_clicked()
{
    if (!QDesktopServices::openUrl(QUrl::fromLocalFile(filePath)))
        qDebug("Failed to open directory.");
}

void KvFilePathReminderForm::on_pb_close_clicked()
{
    close();
}
