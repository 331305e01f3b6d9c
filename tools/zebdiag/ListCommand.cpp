#include "tools/zebdiag/Commands.h"
#include "tools/zebdiag/TextReport.h"

namespace zebdiag
{
ExitCode ListTests(const CCommandContext& context)
{
    const CInventory inventory = context.Inventory();
    const auto adapters = ChooseAdapters(inventory, context.Options.Adapter);
    // Right after the enumeration, while its process still stands by.
    const auto processes = context.Surroundings.ServingProcesses(context.Session);
    context.Console.Out(context.Options.Json
                            ? JsonList(context.JsonHead(inventory), adapters, processes)
                            : RenderList(inventory, adapters, processes, context.Console.Width()));
    return ExitCode::Passed;
}
} // namespace zebdiag
