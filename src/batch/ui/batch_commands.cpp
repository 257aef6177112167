// The batch window's place on the main window: Signal › Batch Analysis...
#include "batch/texts.h"
#include "batch/ui/batch_window.h"
#include "recording/ui/command_registry.h"
#include "recording/ui/tool_windows.h"

namespace vess {
namespace {

void AddBatchCommands(CommandRegistry& registry) {
    registry.Add({
        .objectName = "menu_Batch",
        .menuPath = "&Signal",
        .caption = QString::fromUtf8(batch_texts::kMenuAction.data(), qsizetype(batch_texts::kMenuAction.size())),
        .order = 100,
        .separatorBefore = true,
        .run =
            [](CommandHost& host) {
                host.Tools().Show<BatchWindow>([&host](QWidget* owner) {
                    auto* w = new BatchWindow(host.Ws(), host.Asker(), host.Jobs(), owner);
                    w->setAttribute(Qt::WA_DeleteOnClose);
                    return w;
                });
            },
    });
}

const CommandRegistration registration{AddBatchCommands};

}  // namespace
}  // namespace vess
