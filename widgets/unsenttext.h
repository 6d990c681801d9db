#pragma once

#include <QString>

#include <optional>

/// Sees to it that what the user entered is sent once: Return finishes an edit, and so does the focus that
/// leaves afterwards. GUI thread only.
class UnsentText
{
public:
    /// The user has changed the text.
    void edited() { pending = true; }
    /// Whether `text` has still to be sent.
    bool isUnsent(const QString& text) const { return pending || text != lastSent; }
    /// `text` is what the field holds after its text was sent.
    void sent(const QString& text)
    {
        pending = false;
        lastSent = text;
    }

private:
    bool pending = false;
    std::optional<QString> lastSent;
};
