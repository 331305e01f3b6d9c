#include "tools/zebdiag/Help.h"

#include "Common/src/com/Text.h"
#include "tools/zebdiag/Table.h"
#include "tools/zebdiag/Wrap.h"
#include "tools/zebdiag/languages/Said.h"

namespace zebdiag
{
namespace
{
constexpr unsigned kExampleIndent = 2;

constexpr const wchar_t* kExamples[] = {L"zebdiag doctor", L"zebdiag list", L"zebdiag run --all",
                                        L"zebdiag run --adapter \"Ethernet 2\" --test 1 --json"};

// By the number of the code.
constexpr const wchar_t* kExitCodes[] = {
    Marked(L"done; what ran has passed"),
    Marked(L"a test failed"),
    Marked(L"a test was stopped"),
    Marked(L"could not be run or done"),
    Marked(L"no such adapter, test or profile, or the name fits several"),
    Marked(L"the test is running already"),
    Marked(L"the management service or the provider is not reachable"),
    Marked(L"the command line cannot be understood")};

CTable Commands(const CLI::App& app)
{
    CTable table({Said(L"Command"), Said(L"What it does")});
    for (const CLI::App* command :
         app.get_subcommands([](const CLI::App* c) { return !c->get_group().empty(); }))
        table.Add({WidenUtf8(command->get_name()), WidenUtf8(command->get_description())});
    return table;
}

std::wstring Spelled(const CLI::Option& option)
{
    const std::string letter =
        option.get_snames().empty() ? "    " : "-" + option.get_snames().front() + ", ";
    const std::string value = option.get_type_name().empty() ? "" : " " + option.get_type_name();
    return WidenUtf8(letter + "--" + option.get_lnames().front() + value);
}

CTable Options(const CLI::App& command)
{
    CTable table({Said(L"Option"), Said(L"Meaning, with an example")});
    for (const CLI::Option* option : command.get_options())
        table.Add({Spelled(*option), WidenUtf8(option->get_description())});
    return table;
}
} // namespace

// "zebdiag help" is a command only for the parser: it has no group, is in no list, and stands for the
// program.
std::string CHelpFormatter::make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const
{
    if (app->get_group().empty())
        return make_help(app->get_parent(), app->get_parent()->get_name(), mode);
    const bool isProgram = app->get_parent() == nullptr;
    const wchar_t* usage =
        isProgram ? Marked(L"Usage: {1} COMMAND [OPTIONS]") : Marked(L"Usage: {1} [OPTIONS]");
    const std::wstring text = Paragraph(WidenUtf8(app->get_description()), m_width) + L"\n" +
                              Paragraph(Said(usage, {WidenUtf8(name)}), m_width) + L"\n" +
                              (isProgram ? Commands(*app) : Options(*app)).Render(m_width);
    const std::string footer = app->get_footer();
    return Utf8Text(text) + (footer.empty() ? "" : "\n" + footer);
}

std::wstring HelpFooter(unsigned width)
{
    CTable codes({Said(L"Exit code"), Said(L"Meaning")});
    for (size_t code = 0; code < std::size(kExitCodes); ++code)
        codes.Add({std::to_wstring(code), Said(kExitCodes[code])});
    std::wstring text =
        Paragraph(
            Said(L"\"zebdiag help COMMAND\" shows the options of a command, each with an example; \"zebdiag "
                 L"--version\" shows the version."),
            width) +
        L"\n" +
        Paragraph(
            Said(
                L"An adapter or a test may be given by any part of its name that only it has, in any case; a test "
                L"also by its number in the list. Without --adapter a command means every adapter."),
            width) +
        L"\n" + codes.Render(width) + L"\n" + Paragraph(Said(L"Examples:"), width);
    for (const wchar_t* example : kExamples)
        text += Paragraph(example, width, kExampleIndent);
    return text;
}
} // namespace zebdiag
