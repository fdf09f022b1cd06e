// The property bag on any document: it loads or is refused with a reason, and a bag that
// loaded saves to a document that loads to the same bag.
#include <quendrix/PropertyBag.h>

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray document(reinterpret_cast<const char*>(data), qsizetype(size));
    quendrix::PropertyBag bag;
    if (!bag.fromJson(document)) return 0;
    const QByteArray saved = bag.toJson();
    quendrix::PropertyBag again;
    QString error;
    if (!again.fromJson(saved, &error) || again.names() != bag.names() || again.toJson() != saved) {
        std::fprintf(stderr, "fuzz_propertybag: a loaded bag does not save and load again: %s\n",
                     qPrintable(error));
        std::abort();
    }
    return 0;
}
