#pragma once

#include <QObject>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

// Offers ctlQuendrix in Qt Designer's widget box. A panel that Designer creates knows it runs in
// a designer (its IDE property is true): it is laid out and takes its properties, but it opens
// no link and runs nothing until a host starts it.
class QuendrixDesignerPlugin : public QObject, public QDesignerCustomWidgetInterface {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QDesignerCustomWidgetInterface_iid)
    Q_INTERFACES(QDesignerCustomWidgetInterface)

public:
    explicit QuendrixDesignerPlugin(QObject* parent = nullptr);

    QString name() const override;
    QString group() const override;
    QString toolTip() const override;
    QString whatsThis() const override;
    QString includeFile() const override;
    QIcon icon() const override;
    bool isContainer() const override;
    QWidget* createWidget(QWidget* parent) override;
    QString domXml() const override;
};
