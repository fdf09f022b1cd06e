#include <quendrix/RuntimeError.h>

#include <QCoreApplication>

namespace quendrix {

namespace {

// The error texts, in the language of the installed translator.
struct Message {
    Q_DECLARE_TR_FUNCTIONS(quendrix::RuntimeError)
};

QString composeText(int number, const QString& detail) {
    QString text =
        Message::tr("Laufzeitfehler %1: %2").arg(number).arg(RuntimeError::description(number));
    if (!detail.isEmpty()) text += QStringLiteral(" (%1)").arg(detail);
    return text;
}

}  // namespace

RuntimeError::RuntimeError(int number, const QString& detail)
    : std::runtime_error(composeText(number, detail).toStdString()),
      number_(number),
      detail_(detail) {
}

QString RuntimeError::text() const {
    return composeText(number_, detail_);
}

QString RuntimeError::description(int number) {
    switch (number) {
        case InvalidCall:
            return Message::tr("Unzulässiger Prozeduraufruf oder ungültiges Argument");
        case Overflow:
            return Message::tr("Überlauf");
        case OutOfMemory:
            return Message::tr("Nicht genügend Speicher");
        case SubscriptOutOfRange:
            return Message::tr("Index außerhalb des gültigen Bereichs");
        case DivisionByZero:
            return Message::tr("Division durch Null");
        case TypeMismatch:
            return Message::tr("Typen unverträglich");
        case InternalError:
            return Message::tr("Interner Fehler");
        case FileNotFound:
            return Message::tr("Datei nicht gefunden");
        case InputPastEndOfFile:
            return Message::tr("Einlesen hinter Dateiende");
        case InvalidPropertyValue:
            return Message::tr("Unzulässiger Eigenschaftswert");
        default:
            return Message::tr("Anwendungs- oder objektdefinierter Fehler");
    }
}

}  // namespace quendrix
