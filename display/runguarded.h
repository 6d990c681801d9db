#pragma once

#include <QDebug>

#include <exception>

/// Runs `operation`; when it throws, logs `failure` with the reason and gives false. For the edge of a
/// thread, over which no exception may go.
template <typename Operation>
bool runGuarded(const char* failure, const Operation& operation)
{
    try {
        operation();
        return true;
    } catch (const std::exception& error) {
        qCritical() << failure << error.what();
    } catch (...) {
        qCritical() << failure << "for a reason that it does not tell";
    }
    return false;
}
