// Writes to the trace from the constructor and the destructor of a static object, and from main() in between.
// usage: trace_lifetime LOG_FILE
#include "CDM/src/ZebDebug.h"
#include "CDM/src/ZebTrace.h"

#include <string>

namespace
{
struct CSpeaker
{
    CSpeaker() { ZebDebug().Write("before main, and before the trace is open"); }
    ~CSpeaker()
    {
        const CZebTrace scope("CSpeaker::~CSpeaker");
        ZebDebug().Write("%s", Kept.c_str());
    }
    std::string Kept = "after main";
};

CSpeaker s_speaker;
} // namespace

int main(int argc, char** argv)
{
    if (argc != 2 || ZebDebug().Configure("t", argv[1], 2, 0, false, 0) != 0)
        return 1;
    ZebDebug().Write("in main");
    return 0;
}
