#include "display/imagerelay.h"

#include <utility>

void ImageRelay::put(const QImage& image)
{
    if (!mailbox.put(image))
        return;
    QMetaObject::invokeMethod(
        this,
        [this] {
            QImage newest = mailbox.take();
            if (!newest.isNull())
                emit imageReady(std::move(newest));
        },
        Qt::QueuedConnection);
}
