#pragma once

#include "widgets/unsenttext.h"

#include <QPointer>
#include <QWidget>

#include <memory>

namespace Ui {
class KvLineEdit;
}
class KvSlider;
class PopWidget;

/// A line edit for a number, with a slider that floats under it while it has the focus. GUI thread only.
class KvLineEdit : public QWidget
{
    Q_OBJECT

public:
    explicit KvLineEdit(QWidget* parent = nullptr);
    ~KvLineEdit() override;

    /// The widget under which the slider floats and whose width it takes, not owned; without one it is the
    /// editor itself.
    void setAnchor(QWidget* widget);
    /// The slider's range, both ends included; no signal, and the text stays.
    void setSliderRange(int minimum, int maximum);
    QString text() const;
    /// Rewrites the text and, when it is a number, moves the slider; no signal.
    void setText(const QString& text);

signals:
    /// The user has changed the text.
    void textEdited(QString text);
    /// Return, loss of focus or the slider have finished an edit; each edit is reported once.
    void textFinished(QString text);

private slots:
    void slotMouseHoverd(bool shown);

private:
    void onSliderMoved(int value);
    void onEditingFinished();
    void moveSliderTo(const QString& text);

    std::unique_ptr<Ui::KvLineEdit> ui;
    QPointer<QWidget> anchor;
    std::unique_ptr<KvSlider> slider;
    std::unique_ptr<PopWidget> popup; ///< made when first needed
    bool updating = false; ///< text and slider are following one another
    UnsentText unsent;
};
