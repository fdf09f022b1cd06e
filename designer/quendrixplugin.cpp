#include "quendrixplugin.h"

#include <quendrix/Platform.h>
#include <quendrix/ctlQuendrix.h>

#include <QIcon>

namespace {

// The name a newly placed panel gets, as a host's first panel is called.
constexpr auto kPlacedName = "Quendrix1";

// The surroundings of a panel on a form being designed: the application's dialogs and clock,
// but the panel is told it runs in a designer, whatever the designer program is called.
class DesignerPlatform final : public quendrix::Platform {
public:
    int messageBox(const QString& prompt, int style, const QString& title) override {
        return base().messageBox(prompt, style, title);
    }
    QString inputBox(const QString& prompt, const QString& title,
                     const QString& defaultText) override {
        return base().inputBox(prompt, title, defaultText);
    }
    double now() override { return base().now(); }
    void idle(double seconds) override { base().idle(seconds); }
    bool isKeyDown(int virtualKey) override { return base().isKeyDown(virtualKey); }
    QString componentFolder() override { return base().componentFolder(); }
    bool inDesigner() override { return true; }

private:
    static quendrix::Platform& base() { return quendrix::qtPlatform(); }
};

DesignerPlatform& designerPlatform() {
    static DesignerPlatform platform;
    return platform;
}

}  // namespace

QuendrixDesignerPlugin::QuendrixDesignerPlugin(QObject* parent) : QObject(parent) {
}

QString QuendrixDesignerPlugin::name() const {
    return QStringLiteral("ctlQuendrix");
}

QString QuendrixDesignerPlugin::group() const {
    return QStringLiteral("Quendrix");
}

QString QuendrixDesignerPlugin::toolTip() const {
    return QStringLiteral(
        "Quendrix panel: motor axes, lenses, lights and focus stacks of a "
        "photography rig");
}

QString QuendrixDesignerPlugin::whatsThis() const {
    return QStringLiteral(
        "The Quendrix panel drives the motor axes of a macro or micro photography rig over a "
        "serial port or WiFi. The host restores its properties (InitProperties or "
        "ReadProperties), starts the link (Comm_Starten or WiFi_Starten), takes a picture on "
        "each Schicht event and releases the run with SetOK(true).");
}

QString QuendrixDesignerPlugin::includeFile() const {
    return QStringLiteral("quendrix/ctlQuendrix.h");
}

QIcon QuendrixDesignerPlugin::icon() const {
    return QIcon(QStringLiteral(":/quendrix/designer/quendrix.png"));
}

bool QuendrixDesignerPlugin::isContainer() const {
    return false;
}

QWidget* QuendrixDesignerPlugin::createWidget(QWidget* parent) {
    auto* panel = new ctlQuendrix(parent);
    panel->setPlatform(&designerPlatform());
    // A first placement: the caption shows the panel's name until the form gives another.
    panel->setObjectName(QString::fromLatin1(kPlacedName));
    panel->InitProperties();
    return panel;
}

QString QuendrixDesignerPlugin::domXml() const {
    return QStringLiteral(
               "<ui language=\"c++\">\n"
               " <widget class=\"ctlQuendrix\" name=\"%1\"/>\n"
               "</ui>\n")
        .arg(QString::fromLatin1(kPlacedName));
}
