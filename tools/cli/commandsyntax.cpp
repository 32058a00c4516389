#include "tools/cli/commandsyntax.h"

#include <CLI/CLI.hpp>
#include <utility>

namespace kovtools {

OptionSyntax OptionSyntax::required() const
{
    m_option->required();
    return *this;
}

OptionSyntax OptionSyntax::kind(const std::string& name) const
{
    m_option->type_name(name);
    return *this;
}

OptionSyntax OptionSyntax::shownDefault(const std::string& text) const
{
    m_option->default_str(text);
    return *this;
}

CommandSyntax CommandSyntax::addCommand(const std::string& name, const std::string& help) const
{
    return CommandSyntax(m_app->add_subcommand(name, help));
}

OptionSyntax CommandSyntax::addOption(const std::string& name, std::function<void(const std::string&)> read,
                                      const std::string& help) const
{
    return OptionSyntax(m_app->add_option_function<std::string>(name, std::move(read), help));
}

OptionSyntax CommandSyntax::addOptionOfMany(const std::string& name,
                                            std::function<void(const std::vector<std::string>&)> read,
                                            const std::string& help) const
{
    return OptionSyntax(m_app->add_option_function<std::vector<std::string>>(name, std::move(read), help));
}

OptionSyntax CommandSyntax::addOptionOfMany(const std::string& name, std::vector<std::string>& target,
                                            const std::string& help) const
{
    return OptionSyntax(m_app->add_option(name, target, help)->expected(1, -1));
}

OptionSyntax CommandSyntax::addRepeatedOption(const std::string& name, std::vector<std::string>& target,
                                              const std::string& help) const
{
    return OptionSyntax(m_app->add_option(name, target, help)->allow_extra_args(false)->take_all());
}

void CommandSyntax::addFlag(const std::string& name, bool& target, const std::string& help) const
{
    m_app->add_flag(name, target, help);
}

void CommandSyntax::requireCommand() const
{
    m_app->require_subcommand(1);
}

void CommandSyntax::setFooter(const std::string& text) const
{
    m_app->footer(text);
}

void CommandSyntax::whenChosen(std::function<void()> action) const
{
    m_app->callback(std::move(action));
}

bool CommandSyntax::hasChosenCommand() const
{
    return !m_app->get_subcommands().empty();
}

std::vector<std::string> CommandSyntax::givenOptions() const
{
    std::vector<std::string> names;
    const CLI::App& command = *m_app;
    for (const CLI::Option* const option : command.get_options()) {
        if (option->count() > 0) {
            names.push_back(option->get_name());
        }
    }
    return names;
}

void refuse(const std::string& option, const std::string& why)
{
    throw CLI::ValidationError(option, why);
}

}  // namespace kovtools
