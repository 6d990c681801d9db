#pragma once

#include <QObject>

namespace QWK {

class WindowAgentBase : public QObject
{
public:
    enum SystemButton {
        Unknown,
        WindowIcon,
        Help,
        Minimize,
        Maximize,
        Close,
    };

protected:
    explicit WindowAgentBase(QObject* parent = nullptr) : QObject(parent) {}
};

} // namespace QWK
