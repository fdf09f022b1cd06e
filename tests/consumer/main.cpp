// Uses the installed component as a host would: creates the control, points it at an INI
// file, writes and reads a value, and finds its properties and events by name.
#include <quendrix/ctlQuendrix.h>

#include <QApplication>
#include <QDir>
#include <QMetaObject>
#include <QTemporaryDir>
#include <cstdio>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    int failures = 0;
    auto check = [&](bool ok, const char* what) {
        std::printf("%s %s\n", ok ? "ok  " : "FAIL", what);
        if (!ok) ++failures;
    };

    QTemporaryDir folder;
    ctlQuendrix control;
    control.InitProperties();
    control.setinifile(QDir(folder.path()).filePath(QStringLiteral("host_L.ini")));
    control.setini(QStringLiteral("Platz00"), QStringLiteral("Wartezeit"), QStringLiteral("250"));
    check(control.ini(QStringLiteral("Platz00"), QStringLiteral("Wartezeit"),
                      QStringLiteral("150")) == QStringLiteral("250"),
          "a value written with setini reads back with ini");
    check(control.ini(QStringLiteral("Platz00"), QStringLiteral("fehlt"), QStringLiteral("7  ")) ==
              QStringLiteral("7"),
          "a missing key gives the default without trailing blanks");

    const QMetaObject* meta = control.metaObject();
    const char* properties[] = {"IDE",           "MotorName",    "MotorArt0", "MotorArt1",
                                "Controltyp",    "Kennung",      "inifile",   "Mikroschritt0",
                                "Mikroschritt1", "Caption",      "Sehfeld",   "Kameratyp",
                                "Brennweite",    "Sensorbreite", "AzOffset"};
    for (const char* name : properties)
        check(meta->indexOfProperty(name) >= 0, QByteArray("property ").append(name).constData());
    const char* signatures[] = {"Schicht(QString)",        "Kopie()",
                                "Mittelwert(QString)",     "Kombinieren(QString)",
                                "SehfeldNeu(QString)",     "Bereitschaft(bool)",
                                "PropertyChanged(QString)"};
    int previous = -1;
    for (const char* signature : signatures) {
        const int index = meta->indexOfSignal(signature);
        check(index > previous, QByteArray("event in order: ").append(signature).constData());
        previous = index;
    }
    const char* methods[] = {"ini(QString,QString,QString)", "setini(QString,QString,QString)",
                             "WasKeyPressed(qint32)", "map(qint32,qint32,qint32,qint32,qint32)"};
    for (const char* signature : methods)
        check(meta->indexOfMethod(signature) >= 0,
              QByteArray("method ").append(signature).constData());

    control.setProperty("MotorName", QStringLiteral("Platz1"));
    check(control.MotorName() == QStringLiteral("Platz1"), "a property set through QMetaObject");
    return failures == 0 ? 0 : 1;
}
