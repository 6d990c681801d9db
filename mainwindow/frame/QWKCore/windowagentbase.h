#pragma once

#include <QObject>

namespace QWK {

/// What every window agent shares: the kinds of caption button. GUI thread only.
class WindowAgentBase : public QObject
{
    Q_OBJECT

public:
    enum SystemButton {
        Unknown,
        WindowIcon,
        Help,
        Minimize,
        Maximize,
        Close,
    };
    Q_ENUM(SystemButton)

    explicit WindowAgentBase(QObject* parent = nullptr);
};

} // namespace QWK
