// Measures what the provider costs on top of what the platform and the agent cost, as ratios of work done
// side by side in one run. With letters as arguments, only those figures: Bench.exe a c
#include "Common/src/wine/StubHold.h"
#include "bench/Figures.h"
#include "bench/Must.h"
#include "tests/system/support/Process.h"

#include <cstdio>
#include <exception>
#include <string_view>
#include <wbemprov.h>

namespace
{
struct CFigure
{
    char letter;
    void (*measure)(CReport& report);
};

constexpr CFigure kFigures[] = {
    {'a', &MeasureEnumeration}, {'b', &MeasureAcrossProcesses}, {'c', &MeasureRun},
    {'d', &MeasureStore},       {'e', &MeasureMemory},          {'f', &MeasureStamp},
};

bool Wanted(char letter, int count, char** arguments)
{
    for (int i = 1; i < count; ++i)
        if (std::string_view(arguments[i]) == std::string_view(&letter, 1))
            return true;
    return count < 2;
}
} // namespace

// A goal that is missed is news, not an error: the exit code tells only whether everything was measured.
int main(int count, char** arguments)
{
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    int status = 0;
    try
    {
        BecomeFirstClientOfCom(); // two figures kill the provider at their end
        Must(HoldStubs({__uuidof(IWbemObjectSink), __uuidof(IWbemServices), __uuidof(IWbemProviderInitSink)}),
             "holding the stubs of what the servers call back");
        std::printf("Cost of the provider against the bare minimum: medians of runs made in turns\n");
        CReport report;
        for (const CFigure& figure : kFigures)
            if (Wanted(figure.letter, count, arguments))
                figure.measure(report);
        report.Summary();
    }
    catch (const std::exception& failure)
    {
        std::fprintf(stderr, "The benchmark ended early: %s\n", failure.what());
        status = 1;
    }
    CoUninitialize();
    return status;
}
