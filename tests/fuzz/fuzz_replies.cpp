// Whatever the board sends, cut into arrivals of any length, over either transport and for any
// rig's identification characters: the control evaluates it without failing.
//
// The input: one byte of choices (bit 0 the socket, bits 1-2 the identification characters,
// bit 3 an expected "|F"), then arrivals, each a length byte and its bytes.
#include "control/internals.h"
#include "fuzzinput.h"
#include "link/link.h"
#include "support/testplatform.h"

#include <quendrix/Panel.h>
#include <quendrix/ctlQuendrix.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>

#include <cstdlib>

namespace {

struct Rig {
    TestPlatform platform;
    ctlQuendrix control;

    Rig() {
        control.setPlatform(&platform);
        control.setLocale(QLocale(QLocale::German, QLocale::Germany));
        quendrix::Panel& p = *control.panel();
        p.Schritte[0]->setText(QStringLiteral("400"));
        p.Steigung[0]->setText(QStringLiteral("1"));
        p.lbObjektiv[2]->setText(QStringLiteral("10x Plan"));
    }
};

Rig* rig = nullptr;

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    // The fuzzer's own options are not the application's.
    static int count = 1;
    static char name[] = "fuzz_replies";
    static char* arguments[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static auto* application = new QApplication(count, arguments);
    rig = new Rig;
    // Taken down before the process ends, as a program's main would, so that the leak check
    // at exit sees only what the evaluation itself left behind.
    std::atexit([] {
        delete rig;
        delete application;
    });
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const QString kennungen[] = {QStringLiteral("qQ"), QStringLiteral("@"),
                                        QStringLiteral("%"), QString(QChar(0x20AC))};
    FuzzInput input(data, size);
    const std::uint8_t choices = input.byte();
    const bool socket = choices & 1;
    ctlQuendrix& control = rig->control;
    quendrix::Link& link = *quendrix::internals(control).link();
    link.forgetReceived();
    link.setErwartet(choices & 8 ? QStringLiteral("|F") : QStringLiteral("T|"));
    control.setKennung(kennungen[(choices >> 1) & 3]);
    control.wifi = socket;
    rig->platform.messages.clear();

    while (!input.atEnd())
        link.received(input.piece(), socket);
    // What is left complete in the remainder is evaluated as the next arrivals would.
    while (link.sRest().contains(QStringLiteral("\r\n")))
        control.Auswerten(QString(), socket);
    return 0;
}
