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
    struct Description {
        int number;
        const char* text;
    };
    static constexpr Description kDescriptions[] = {
        {InvalidCall, QT_TRANSLATE_NOOP("quendrix::RuntimeError",
                                        "Unzulässiger Prozeduraufruf oder ungültiges Argument")},
        {Overflow, QT_TRANSLATE_NOOP("quendrix::RuntimeError", "Überlauf")},
        {OutOfMemory, QT_TRANSLATE_NOOP("quendrix::RuntimeError", "Nicht genügend Speicher")},
        {SubscriptOutOfRange,
         QT_TRANSLATE_NOOP("quendrix::RuntimeError", "Index außerhalb des gültigen Bereichs")},
        {DivisionByZero, QT_TRANSLATE_NOOP("quendrix::RuntimeError", "Division durch Null")},
        {TypeMismatch, QT_TRANSLATE_NOOP("quendrix::RuntimeError", "Typen unverträglich")},
        {InternalError, QT_TRANSLATE_NOOP("quendrix::RuntimeError", "Interner Fehler")},
        {FileNotFound, QT_TRANSLATE_NOOP("quendrix::RuntimeError", "Datei nicht gefunden")},
        {InputPastEndOfFile,
         QT_TRANSLATE_NOOP("quendrix::RuntimeError", "Einlesen hinter Dateiende")},
        {InvalidPropertyValue,
         QT_TRANSLATE_NOOP("quendrix::RuntimeError", "Unzulässiger Eigenschaftswert")},
    };
    for (const Description& known : kDescriptions)
        if (known.number == number) return Message::tr(known.text);
    return Message::tr("Anwendungs- oder objektdefinierter Fehler");
}

}  // namespace quendrix
