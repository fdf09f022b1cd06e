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
    // The numbers the panel raises.
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

    // An error of the given number; detail, when given, says more about where it arose.
    explicit RuntimeError(int number, const QString& detail = {});

    // The error's number (Number).
    int number() const { return number_; }
    // The German text the panel shows, e.g. "Laufzeitfehler 6: Überlauf".
    QString text() const;
    // The German description of a number, e.g. "Überlauf" for 6.
    static QString description(int number);

private:
    int number_;
    QString detail_;
};

}  // namespace quendrix
