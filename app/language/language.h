#pragma once

#include <QString>
#include <QStringList>

class QCoreApplication;

// The languages the program speaks. German is the panel's own: its texts are written in German
// and need no translation. English comes from the program's translation of those texts.
namespace language {

enum class Language { German, English };

// The language asked for: `option` is the value of --lang ("de" or "en"; empty when not
// given), `uiLanguages` the system's user-interface languages in order of preference
// (QLocale::system().uiLanguages()). Without --lang the program speaks English when the
// system's first choice is English, German otherwise ("C" included).
Language choose(const QString& option, const QStringList& uiLanguages);

// Installs the translations `chosen` needs into `app`: the program's own (panel and window) for
// English, Qt's own dialogs' (the Yes and No of the panel's questions) for German, where Qt's
// translations are installed. Must run before any widget is made, which takes its texts when it
// is built. Returns false, and says why in `problem`, when the program's English translation
// cannot be loaded; everything then stays German.
bool install(QCoreApplication& app, Language chosen, QString* problem);

}  // namespace language
