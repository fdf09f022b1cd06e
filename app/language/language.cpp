#include "language/language.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace language {

namespace {

// Built from translations/quendrix_en.ts and embedded in the program.
const QString kEnglish = QStringLiteral(":/quendrix/i18n/quendrix_en.qm");

}  // namespace

Language choose(const QString& option, const QStringList& uiLanguages) {
    if (option == u"en") return Language::English;
    if (option == u"de") return Language::German;
    if (uiLanguages.isEmpty()) return Language::German;
    return QLocale(uiLanguages.constFirst()).language() == QLocale::English ? Language::English
                                                                            : Language::German;
}

bool install(QCoreApplication& app, Language chosen, QString* problem) {
    auto* translator = new QTranslator(&app);
    if (chosen == Language::English) {
        if (!translator->load(kEnglish)) {
            delete translator;
            *problem =
                QStringLiteral("the English translation (%1) cannot be loaded").arg(kEnglish);
            return false;
        }
        QCoreApplication::installTranslator(translator);
        return true;  // Qt's own dialogs speak English untranslated
    }
    if (translator->load(QLocale(QLocale::German, QLocale::Germany), QStringLiteral("qtbase"),
                         QStringLiteral("_"), QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QCoreApplication::installTranslator(translator);
    else
        delete translator;
    return true;
}

}  // namespace language
