#pragma once

#include <quendrix/quendrix_export.h>

#include <QString>
#include <stdexcept>

namespace quendrix {

// An arithmetic or conversion failure, numbered as the system's run time numbers them.
// It reaches a host that called a public method; a handler started on the panel catches
// it and shows its text in a message box, so it never crosses Qt's event loop.
class QUENDRIX_EXPORT RuntimeError : public std::runtime_error {
public:
    enum Number : int {
        InvalidCall = 5,
        Overflow = 6,
        OutOfMemory = 7,
        SubscriptOutOfRange = 9,
        DivisionByZero = 11,
        TypeMismatch = 13,
        InternalError = 51,
        FileNotFound = 53,
        InputPastEndOfFile = 62,
        InvalidPropertyValue = 380,
    };

    explicit RuntimeError(int number, const QString& detail = {});

    int number() const { return number_; }
    // The German text the panel shows, e.g. "Laufzeitfehler 6: Überlauf".
    QString text() const;
    static QString description(int number);

private:
    int number_;
    QString detail_;
};

}  // namespace quendrix
