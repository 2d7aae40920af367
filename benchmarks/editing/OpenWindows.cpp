#include "benchmarks/editing/OpenWindows.h"

#include "benchmarks/BenchmarkSupport.h"
#include "document/VXDocument.h"
#include "platform/Curtain.h"

#include <QApplication>
#include <map>
#include <memory>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr std::size_t kTouched = 2'000'000'000;

struct OpenWindow {
    std::unique_ptr<VXDocument> document;
    std::unique_ptr<VXWindowController> window;
};

std::map<int, OpenWindow> &openWindows()
{
    static std::map<int, OpenWindow> windows;
    return windows;
}

} // namespace

VXWindowController &windowOf(int records)
{
    OpenWindow &open = openWindows()[records];
    if (!open.document) {
        touchMemory(kTouched);
        open.document = std::make_unique<VXDocument>();
        open.document->readFromURLOfType(corpusFile(records, u"xml"_s), u"public.xml"_s);
        open.window = std::make_unique<VXWindowController>(*open.document);
        open.window->show();
        Curtain::hang();
        QApplication::processEvents();
    }
    return *open.window;
}

void closeWindows()
{
    openWindows().clear();
}

} // namespace runebook
