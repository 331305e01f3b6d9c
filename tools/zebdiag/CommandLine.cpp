#include "tools/zebdiag/CommandLine.h"

#include "Common/src/com/Text.h"
#include "tools/zebdiag/CommandTable.h"
#include "tools/zebdiag/Help.h"
#include "tools/zebdiag/OptionRules.h"
#include "tools/zebdiag/OptionTable.h"
#include "tools/zebdiag/OptionValues.h"
#include "tools/zebdiag/Wrap.h"
#include "tools/zebdiag/languages/Said.h"

#include <CLI/CLI.hpp>
#include <sstream>

namespace zebdiag
{
namespace
{
constexpr char kHelpNames[] = "-h,-?,--help"; // "/?" as well: a slash begins an option as a dash does

// CLI11 takes the arguments from the back.
std::vector<std::string> Reversed(const std::vector<std::wstring>& arguments)
{
    std::vector<std::string> reversed;
    for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument)
        reversed.push_back(Utf8Text(*argument));
    return reversed;
}

std::wstring NoSuchCommand(const std::string& word)
{
    return Said(L"There is no command \"{1}\".", {WidenUtf8(word)});
}

// The parser says what is wrong with an option's values in its own words, but begins with the option's name,
// which lacks its dashes if the option takes no value.
std::wstring FaultOfValues(const CLI::App& command, const std::string& message)
{
    for (const CLI::Option* option : command.get_options())
    {
        const std::string name = option->get_name();
        if (message.starts_with(name.substr(2) + " "))
            return Said(L"{1} takes no value.", {WidenUtf8(name)});
        if (!message.starts_with(name + ":"))
            continue;
        if (option->count() > 1)
            return Said(L"{1} is given twice.", {WidenUtf8(name)});
        return Said(L"{1} needs a value: {1} {2}.", {WidenUtf8(name), WidenUtf8(option->get_type_name())});
    }
    return WidenUtf8(message);
}

std::wstring InOurWords(const CLI::App& app, const CLI::App* command, const CLI::Error& error)
{
    if (!command)
    {
        const std::vector<std::string> words = app.remaining();
        return words.empty() || words.front().starts_with("-") ? Said(L"Give a command first.")
                                                               : NoSuchCommand(words.front());
    }
    if (dynamic_cast<const CLI::ArgumentMismatch*>(&error))
        return FaultOfValues(*command, error.what());
    const std::vector<std::string> rest = command->remaining();
    if (!dynamic_cast<const CLI::ExtrasError*>(&error) || rest.empty())
        return WidenUtf8(error.what());
    return rest.front().starts_with("-") ? Said(L"\"zebdiag {1}\" has no option {2}.",
                                                {WidenUtf8(command->get_name()), WidenUtf8(rest.front())})
                                         : Said(L"\"{1}\" is no option.", {WidenUtf8(rest.front())});
}

std::string Refusal(const CLI::App& app, const CLI::Error& error, unsigned width)
{
    const auto parsed = app.get_subcommands();
    const CLI::App* command = parsed.empty() || app.remaining_size() != 0 ? nullptr : parsed.front();
    // "help" itself has no group.
    const std::string name = command && !command->get_group().empty() ? " " + command->get_name() : "";
    return Utf8Text(Paragraph(L"zebdiag: " + InOurWords(app, command, error) + L"\n" +
                                  Said(L"Try: {1}", {WidenUtf8("zebdiag" + name + " --help")}),
                              width));
}

// The parser with all commands and options. It writes to itself, so it stays where it is.
class CParser
{
  public:
    CParser(unsigned width, unsigned errorWidth)
    {
        // The commands inherit these.
        m_app.formatter(std::make_shared<CHelpFormatter>(width));
        m_app.set_help_flag(kHelpNames);
        for (const CCommandRow& row : CommandRows())
            AddCommand(row, width);
        m_help = m_app.add_subcommand("help")->group("");
        m_help->add_option("COMMAND", m_topic);
        AddLocale(*m_help, "--locale", m_options.Target.Locale);
        m_app.set_version_flag("--version", "zebdiag " ZEB_VERSION);
        m_app.require_subcommand(1);
        m_app.footer(Utf8Text(HelpFooter(width)));
        m_app.failure_message([errorWidth](const CLI::App* app, const CLI::Error& error)
                              { return Refusal(*app, error, errorWidth); });
    }
    CParser(const CParser&) = delete;
    CParser& operator=(const CParser&) = delete;

    CCommandLine Parse(const std::vector<std::wstring>& arguments)
    {
        try
        {
            return {Read(arguments), {}, ExitCode::Passed};
        }
        catch (const CLI::ParseError& end)
        {
            std::ostringstream text;
            const int code = m_app.exit(end, text, text);
            return {std::nullopt, WidenUtf8(text.str()), code == 0 ? ExitCode::Passed : ExitCode::Usage};
        }
    }

  private:
    void AddCommand(const CCommandRow& row, unsigned width)
    {
        const std::string name = CommandName(row.Id);
        CLI::App* command = m_app.add_subcommand(name, Utf8Text(Said(row.Summary)));
        command->footer(row.Text ? Utf8Text(Paragraph(Said(row.Text), width)) : "");
        command->parse_complete_callback([this, &row] { m_options.Command = row.Id; });
        AddOptions(*command, row.Id, m_options);
        command->set_help_flag(kHelpNames,
                               Utf8Text(Said(L"Show this help.")) + "\nzebdiag " + name + " --help");
    }

    COptions Read(const std::vector<std::wstring>& arguments)
    {
        if (arguments.empty())
            throw CLI::CallForHelp();
        m_app.parse(Reversed(arguments));
        if (m_help->parsed())
            ShowTopic();
        if (const std::wstring fault = FaultOf(m_options); !fault.empty())
            throw CLI::ValidationError(Utf8Text(fault));
        return std::move(m_options);
    }

    [[noreturn]] void ShowTopic()
    {
        const auto isTopic = [this](const CLI::App* command) { return command->get_name() == m_topic; };
        if (m_topic.empty())
            throw CLI::CallForHelp();
        if (m_app.get_subcommands(isTopic).empty())
            throw CLI::ValidationError(Utf8Text(NoSuchCommand(m_topic)));
        m_app.parse({"--help", m_topic});
        throw CLI::CallForHelp();
    }

    COptions m_options;
    std::string m_topic; // the command to show the help of
    CLI::App m_app{
        Utf8Text(Said(L"Diagnostics of wired Ethernet adapters: list, run and stop tests, read results.")),
        "zebdiag"};
    CLI::App* m_help = nullptr; // the command
};
} // namespace

CCommandLine ParseCommandLine(const std::vector<std::wstring>& arguments, unsigned width, unsigned errorWidth)
{
    return CParser(width, errorWidth).Parse(arguments);
}

CFirstLook FirstLookAt(const std::vector<std::wstring>& arguments)
{
    CFirstLook look;
    CLI::App app;
    app.allow_extras();
    app.set_help_flag();
    std::wstring page;
    std::wstring file;
    AddName(app, "--html", page);
    AddNameOrFlag(app, "--json", file, look.Json);
    AddLocale(app, "--locale", look.Locale);
    try
    {
        app.parse(Reversed(arguments));
    }
    catch (const CLI::ParseError&)
    {
        return look; // reading the whole line says what is wrong with it
    }
    // A page is for people, even if a document goes with it.
    look.Json = look.Json && page.empty();
    return look;
}
} // namespace zebdiag
