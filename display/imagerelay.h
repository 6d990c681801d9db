#pragma once

#include "display/framemailbox.h"

#include <QImage>
#include <QObject>

/// Brings pictures to the GUI thread: the newest one, whatever number came while it was busy.
class ImageRelay : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Takes a picture over. Any thread.
    void put(const QImage& image);
    /// Drops the picture that is under way. Any thread.
    void clear() { mailbox.drop(); }

signals:
    /// Emitted on this object's thread.
    void imageReady(QImage image);

private:
    FrameMailbox mailbox;
};
