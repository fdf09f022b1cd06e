#include "rigsettings.h"

#include <quendrix/ctlQuendrix.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

QString simulatedRigName(int controltyp) {
    switch (controltyp) {
        case 0:
            return QStringLiteral("bellows");
        case 1:
            return QStringLiteral("changer");
        case 2:
            return QStringLiteral("microscope");
        default:
            return QStringLiteral("type%1").arg(controltyp);
    }
}

QString configFolder() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppConfigLocation);
    QDir().mkpath(folder);
    return folder;
}

// A fresh copy of `named` for this run (the named file itself is never written): the trial
// starts from what the file says now.
QString copyForTrial(const QString& named, QString* error) {
    const QString folder = RigSettings::dataFolder() + QStringLiteral("/copies");
    const QString copy = folder + QLatin1Char('/') + QFileInfo(named).fileName();
    if (!QDir().mkpath(folder)) {
        *error = QStringLiteral("cannot make the folder %1 for a copy of %2").arg(folder, named);
        return {};
    }
    // Through a new file, so that a named file that is itself the copy is not lost.
    const QString fresh = copy + QStringLiteral(".new");
    QFile::remove(fresh);
    QFile source(named);
    if (!source.copy(fresh)) {
        *error = QStringLiteral("cannot copy %1 to %2: %3").arg(named, fresh, source.errorString());
        return {};
    }
    QFile::remove(copy);
    if (!QFile::rename(fresh, copy)) {
        *error = QStringLiteral("cannot replace %1 with a new copy of %2").arg(copy, named);
        return {};
    }
    // The copy is the rig's to write, even when the named file is read-only.
    QFile::setPermissions(copy, QFile::ReadOwner | QFile::WriteOwner);
    return copy;
}

// A demo lens: its name, its magnification and, on the changer, the caption of its position
// (the panel shows the first lens whose name holds the caption of the position reached).
struct DemoLens {
    const char* name;
    double magnification;
    const char* position;
};

void seedLenses(ctlQuendrix& panel, const QList<DemoLens>& lenses) {
    const QString section = panel.Kameratyp();
    const QString motor = panel.MotorName().right(1);
    // The simulated camera's sensor (the panel's default "Bildbreite" and "aufloesungx").
    constexpr double sensorWidth = 22.5, pixels = 1024;
    for (int k = 0; k < lenses.size(); ++k) {
        const DemoLens& lens = lenses[k];
        const QString suffix = motor + QLatin1Char('_') + QString::number(k);
        panel.setini(section, QStringLiteral("Objektiv") + suffix, QString::fromUtf8(lens.name));
        panel.setini(section, QStringLiteral("Faktor") + suffix,
                     panel.locale().toString(sensorWidth / lens.magnification / pixels, 'g', 6));
        if (lens.position)
            panel.setini(panel.MotorName() + QLatin1Char('0'), QStringLiteral("Objektiv%1").arg(k),
                         QString::fromUtf8(lens.position));
    }
    // The list's first lens (entry 0 is "ohne"); on the changer, the one at position 0.
    panel.setini(section, QStringLiteral("Aktuell") + motor, QStringLiteral("1"));
}

}  // namespace

QString RigSettings::dataFolder() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    QDir().mkpath(folder);
    return folder;
}

RigSettings RigSettings::choose(const Options& options, int controltyp, QString* error) {
    RigSettings settings;
    if (options.ini.isEmpty()) {
        // Each simulated rig type keeps its own file: the types read different keys and
        // defaults, and a lens list or travel of one would break another.
        settings.file =
            options.simulated()
                ? dataFolder() +
                      QStringLiteral("/simulated-%1_L.ini").arg(simulatedRigName(controltyp))
                : configFolder() + QStringLiteral("/quendrix_L.ini");
        settings.fresh = !QFileInfo::exists(settings.file);
        return settings;
    }
    if (!options.simulated()) {
        settings.file = options.ini;
        return settings;
    }
    settings.named = options.ini;
    if (!QFileInfo::exists(options.ini)) {
        // Nothing to copy: the trial starts from a new file beside the copies.
        settings.file =
            dataFolder() + QStringLiteral("/copies/") + QFileInfo(options.ini).fileName();
        QDir().mkpath(QFileInfo(settings.file).path());
        QFile::remove(settings.file);
        settings.fresh = true;
        return settings;
    }
    settings.file = copyForTrial(options.ini, error);
    return settings;
}

void seedSimulatedRig(ctlQuendrix& panel) {
    const QString axis0 = panel.MotorName() + QLatin1Char('0');
    const auto set = [&](const char* key, const char* value) {
        panel.setini(axis0, QString::fromLatin1(key), QString::fromLatin1(value));
    };
    // 200 us a step instead of 800 or 500, so that a stack takes seconds, not minutes; and a
    // plan over the simulated subject, which lies between 2000 and 6000 steps. The panel runs
    // a stack downward from Beginn.
    set("Taktpause", "200");
    set("Beginn", "6000");
    set("Ende", "2000");
    set("Serie", "8");
    switch (panel.Controltyp()) {
        case 1:
            // The panel's default travel of 1 step would skip every move of axis 0.
            set("MaxPosition", "20000");
            seedLenses(panel, {{"Makro 1x", 1, "1x"},
                               {"Makro 2x", 2, "2x"},
                               {"Mikro 5x", 5, "5x"},
                               {"Mikro 10x", 10, "10x"},
                               {"Mikro 20x", 20, "20x"}});
            break;
        case 2:
            set("MaxPosition", "20000");
            // The microscope shows a lens by its name's second word, and selects the first
            // lens whose name holds what it shows: two-word names keep the two in step.
            seedLenses(
                panel,
                {{"Plan 4x", 4, nullptr}, {"Plan 10x", 10, nullptr}, {"Plan 20x", 20, nullptr}});
            break;
        default:
            break;  // the bellows rig's default travel covers the subject
    }
}
