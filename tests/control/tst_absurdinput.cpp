// Every control of the panel worked with absurd values in every box: whatever the operator
// types, clicks or drags, no failure leaves a handler. A failure the operator must know of is
// a run-time error in a message box; none may be one nobody foresaw.
#include "support/testplatform.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QSlider>
#include <QTabWidget>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

namespace {

// Lets the widget see the mouse as the operator uses it: each button pressed and let go.
void pressEveryButton(QWidget* widget) {
    for (const Qt::MouseButton button : {Qt::LeftButton, Qt::RightButton, Qt::MiddleButton}) {
        QTest::mousePress(widget, button);
        QTest::mouseRelease(widget, button);
        QTest::mouseMove(widget);
    }
}

}  // namespace

class TestAbsurdInput : public QObject {
    Q_OBJECT

    QTemporaryDir folder_;

private slots:
    void everyHandlerSurvivesAbsurdValues_data() {
        QTest::addColumn<int>("rig");
        QTest::addColumn<QString>("typed");
        const QStringList absurd = {
            "1e400",  "-1e300", "", "abc", "2147483648", "-0,5", QString(5000, u'9'),
            "1e-400", ",",      "0"};
        for (int rig = 0; rig < 3; ++rig) {
            for (const QString& typed : absurd) {
                const QString name = QStringLiteral("rig %1, %2").arg(rig).arg(typed.left(12));
                QTest::newRow(qPrintable(name)) << rig << typed;
            }
        }
    }

    void everyHandlerSurvivesAbsurdValues() {
        QFETCH(int, rig);
        QFETCH(QString, typed);
        TestPlatform platform;
        platform.folder = folder_.path();
        platform.keysDown.insert(quendrix::VirtualKey::Escape);  // every wait ends at once
        for (int i = 0; i < 20; ++i)
            platform.inputAnswers << typed;
        ctlQuendrix control;
        control.setPlatform(&platform);
        control.setLocale(QLocale(QLocale::German, QLocale::Germany));
        control.setControltyp(qint16(rig));
        control.setKameratyp(QStringLiteral("Kamera"));
        control.setinifile(folder_.filePath(QStringLiteral("absurd_L.ini")));
        control.show();
        quendrix::Panel& p = *control.panel();

        for (QWidget* widget : control.findChildren<QWidget*>())
            widget->setEnabled(true);
        for (QLineEdit* box : control.findChildren<QLineEdit*>()) {
            box->setText(typed);
            emit box->returnPressed();
        }
        for (int tab = 0; tab < p.SSTab1->count(); ++tab)
            p.SSTab1->setCurrentIndex(tab);
        for (QAbstractButton* button : control.findChildren<QAbstractButton*>()) {
            button->click();
            pressEveryButton(button);
        }
        for (QLabel* label : control.findChildren<QLabel*>())
            pressEveryButton(label);
        for (QSlider* slider : control.findChildren<QSlider*>()) {
            for (const int value : {slider->minimum(), slider->maximum()}) {
                slider->setValue(value);
                emit slider->sliderMoved(value);
                emit slider->sliderReleased();
                pressEveryButton(slider);
            }
        }
        for (QScrollBar* bar : control.findChildren<QScrollBar*>())
            bar->setValue(bar->maximum());
        for (QComboBox* list : control.findChildren<QComboBox*>()) {
            list->addItem(typed);
            for (int i = 0; i < list->count(); ++i)
                list->setCurrentIndex(i);
        }
        p.Grid1->setRowCount(std::max(2, p.Grid1->rowCount()));
        p.Grid1->setCurrentCell(1, 1);
        for (const Qt::Key key : {Qt::Key_F2, Qt::Key_Return, Qt::Key_Escape, Qt::Key_Delete}) {
            QTest::keyClick(p.Grid1, key);
            QTest::keyClick(p.Zelle, key);
        }
        emit p.Grid1->cellDoubleClicked(1, 1);
        p.Timer3->start(0);
        QTest::qWait(20);
        p.Timer3->stop();

        for (const TestPlatform::Message& message : platform.messages) {
            QVERIFY2(!message.prompt.startsWith(QStringLiteral("Laufzeitfehler 51")) &&
                         !message.prompt.startsWith(QStringLiteral("Laufzeitfehler 7:")),
                     qPrintable(message.prompt));
        }
    }
};

QTEST_MAIN(TestAbsurdInput)
#include "tst_absurdinput.moc"
