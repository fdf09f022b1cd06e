#include <quendrix/RuntimeError.h>

namespace quendrix {

namespace {
QString composeText(int number, const QString& detail) {
    QString text =
        QStringLiteral("Laufzeitfehler %1: %2").arg(number).arg(RuntimeError::description(number));
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
            return QStringLiteral("Unzulässiger Prozeduraufruf oder ungültiges Argument");
        case Overflow:
            return QStringLiteral("Überlauf");
        case OutOfMemory:
            return QStringLiteral("Nicht genügend Speicher");
        case SubscriptOutOfRange:
            return QStringLiteral("Index außerhalb des gültigen Bereichs");
        case DivisionByZero:
            return QStringLiteral("Division durch Null");
        case TypeMismatch:
            return QStringLiteral("Typen unverträglich");
        case InternalError:
            return QStringLiteral("Interner Fehler");
        case FileNotFound:
            return QStringLiteral("Datei nicht gefunden");
        case InputPastEndOfFile:
            return QStringLiteral("Einlesen hinter Dateiende");
        case InvalidPropertyValue:
            return QStringLiteral("Unzulässiger Eigenschaftswert");
        default:
            return QStringLiteral("Anwendungs- oder objektdefinierter Fehler");
    }
}

}  // namespace quendrix
