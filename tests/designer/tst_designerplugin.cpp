// The Designer plug-in as Qt Designer uses it: loaded from its file, asked for its interface,
// and made to create the panel that the form then holds.
#include <quendrix/ctlQuendrix.h>

#include <QPluginLoader>
#include <QSerialPort>
#include <QSignalSpy>
#include <QTcpSocket>
#include <QTimer>
#include <QXmlStreamReader>
#include <QtTest>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

namespace {

// The class and name the plug-in's form snippet gives its widget.
std::pair<QString, QString> placedWidget(const QString& domXml) {
    QXmlStreamReader xml(domXml);
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("widget"))
            return {xml.attributes().value(QLatin1String("class")).toString(),
                    xml.attributes().value(QLatin1String("name")).toString()};
    }
    return {};
}

}  // namespace

class TestDesignerPlugin : public QObject {
    Q_OBJECT

private slots:
    void designerPlacesAPanelThatKnowsItIsBeingDesigned() {
        // Outside a designer the panel is not told it is in one, so what follows comes from
        // the plug-in.
        QVERIFY(!ctlQuendrix().IDE());

        QPluginLoader loader(QStringLiteral(DESIGNER_PLUGIN));
        QObject* instance = loader.instance();
        QVERIFY2(instance, qPrintable(loader.errorString()));
        auto* plugin = qobject_cast<QDesignerCustomWidgetInterface*>(instance);
        QVERIFY(plugin);

        QCOMPARE(plugin->name(), QStringLiteral("ctlQuendrix"));
        QVERIFY(!plugin->group().isEmpty());
        QVERIFY(!plugin->toolTip().isEmpty());
        QVERIFY(plugin->whatsThis().contains(QStringLiteral("SetOK")));
        QVERIFY(!plugin->icon().isNull());
        QVERIFY(!plugin->isContainer());
        // Forms made in Designer include the header the package installs.
        QVERIFY(QFile::exists(QStringLiteral(PUBLIC_INCLUDE_DIR "/") + plugin->includeFile()));
        const auto [widgetClass, widgetName] = placedWidget(plugin->domXml());
        QCOMPARE(widgetClass, plugin->name());
        QCOMPARE(widgetName, QStringLiteral("Quendrix1"));

        QWidget form;
        QWidget* widget = plugin->createWidget(&form);
        auto* panel = qobject_cast<ctlQuendrix*>(widget);
        QVERIFY(panel);
        QCOMPARE(panel->parentWidget(), &form);
        QCOMPARE(panel->objectName(), widgetName);
        QCOMPARE(panel->Caption(), widgetName);
        QVERIFY(panel->property("IDE").toBool());

        // Designer's property editor writes through the meta-object.
        QSignalSpy changed(panel, &ctlQuendrix::PropertyChanged);
        QVERIFY(panel->setProperty("Controltyp", 1));
        QVERIFY(panel->setProperty("MotorName", QStringLiteral("Platz1")));
        QCOMPARE(panel->Controltyp(), 1);
        QCOMPARE(panel->MotorName(), QStringLiteral("Platz1"));
        QCOMPARE(changed.size(), 2);
        QCOMPARE(changed.at(0).at(0).toString(), QStringLiteral("Controltyp"));

        // On the form being designed, the panel has opened no link and runs nothing.
        form.show();
        QCoreApplication::processEvents();
        QVERIFY(!panel->MSComm1()->isOpen());
        QCOMPARE(panel->Telnet1()->state(), QAbstractSocket::UnconnectedState);
        for (const QTimer* timer : panel->findChildren<QTimer*>())
            QVERIFY2(!timer->isActive(), qPrintable(timer->objectName()));
    }
};

QTEST_MAIN(TestDesignerPlugin)
#include "tst_designerplugin.moc"
