#include "propertyrestore.h"

#include <quendrix/RuntimeError.h>
#include <quendrix/ctlQuendrix.h>

#include <QLocale>

namespace {

// The error the panel raises for one entry alone, tried on a panel of its own; empty when it
// takes it.
QString refusalOf(const ctlQuendrix& panel, const QString& name, const QVariant& value) {
    ctlQuendrix trial;
    trial.setPlatform(&panel.platform());
    trial.setLocale(panel.locale());
    trial.setObjectName(panel.objectName());
    quendrix::PropertyBag alone;
    alone.WriteProperty(name, value);
    try {
        trial.ReadProperties(alone);
    } catch (const quendrix::RuntimeError& error) {
        return error.text();
    }
    return {};
}

}  // namespace

QStringList restoreProperties(ctlQuendrix& panel, quendrix::PropertyBag bag) {
    try {
        panel.ReadProperties(bag);
        return {};
    } catch (const quendrix::RuntimeError&) {
    }
    QStringList problems;
    for (const QString& name : bag.names()) {
        const QVariant value = bag.ReadProperty(name);
        const QString refusal = refusalOf(panel, name, value);
        if (refusal.isEmpty()) continue;
        problems << QStringLiteral("entry \"%1\" = \"%2\" cannot be used (%3); its default is used")
                        .arg(name, value.toString().left(80), refusal);
        bag.WriteProperty(name, QVariant(), QVariant());  // a value equal to its default goes
    }
    try {
        panel.ReadProperties(bag);
    } catch (const quendrix::RuntimeError& error) {
        problems << QStringLiteral(
                        "the entries together cannot be used (%1); every property "
                        "takes its default")
                        .arg(error.text());
        panel.InitProperties();
    }
    return problems;
}
