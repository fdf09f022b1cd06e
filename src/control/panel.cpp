#include <quendrix/Panel.h>
#include <quendrix/RuntimeError.h>

#include "control/panelkit.h"

#include <QFont>
#include <QSerialPort>
#include <QTcpSocket>
#include <QTimer>
#include <QVariant>

namespace quendrix {

using namespace kit;

Panel::Panel(QWidget* owner) {
    buildTabs(owner);
    buildOperatingTab(page(SSTab1, 0));
    buildOpticsTab(page(SSTab1, 1));
    buildAxisSettingsTab(page(SSTab1, 2));
    buildLightingTab(page(SSTab1, 3));
    buildNonVisual(owner);
}

// The tab control with its four pages; the owner's layout takes it. The caption heads the
// operating tab.
void Panel::buildTabs(QWidget* owner) {
    SSTab1 = make<QTabWidget>(owner, QStringLiteral("SSTab1"));
    addPage(SSTab1, tr("Steuerung"));
    addPage(SSTab1, tr("Optik"));
    addPage(SSTab1, tr("Achsen"));
    addPage(SSTab1, tr("Licht"));

    QWidget* operating = page(SSTab1, 0);
    lblCaption = label(operating, QStringLiteral("lblCaption"), QStringLiteral("Quendrix"));
    QFont bold = lblCaption->font();
    bold.setBold(true);
    lblCaption->setFont(bold);
    // However long the caption a host gives, the panel keeps its width; the caption is cut.
    lblCaption->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    column(operating)->addWidget(lblCaption);
}

void Panel::buildNonVisual(QWidget* owner) {
    MSComm1 = new QSerialPort(owner);
    MSComm1->setObjectName(QStringLiteral("MSComm1"));
    Telnet1 = new QTcpSocket(owner);
    Telnet1->setObjectName(QStringLiteral("Telnet1"));
    Timer3 = new QTimer(owner);
    Timer3->setObjectName(QStringLiteral("Timer3"));
}

int value(const QCheckBox* box) {
    switch (box->checkState()) {
        case Qt::Checked:
            return 1;
        case Qt::PartiallyChecked:
            return 2;
        default:
            return 0;
    }
}

// Any check box can be set grayed (2); Qt then makes it three-state, so the user can cycle
// through the grayed state too. Other values are rejected like an invalid property value.
void setValue(QCheckBox* box, int value) {
    switch (value) {
        case 0:
            box->setCheckState(Qt::Unchecked);
            break;
        case 1:
            box->setCheckState(Qt::Checked);
            break;
        case 2:
            box->setCheckState(Qt::PartiallyChecked);
            break;
        default:
            throw RuntimeError(RuntimeError::InvalidPropertyValue,
                               QStringLiteral("%1.Value = %2").arg(box->objectName()).arg(value));
    }
}

QString tag(const QObject* control) {
    return control->property("Tag").toString();
}

void setTag(QObject* control, const QString& text) {
    control->setProperty("Tag", text);
}

}  // namespace quendrix
