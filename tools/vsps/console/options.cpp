#include "console/options.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <optional>

#include "console/report_format.h"

Option& Option::required() {
    option_->required();
    return *this;
}

Option& Option::atLeast(int values) {
    option_->required()->expected(values, CLI::detail::expected_max_vector_size);
    return *this;
}

Option& Option::takes(const std::string& value) {
    option_->type_name(value);
    return *this;
}

// NaN is within no bounds, unlike with CLI::Range.
Option& Option::within(double lowest, double highest, const std::string& what) {
    option_->check(
        [=](const std::string& text) {
            double value = 0;
            if (CLI::detail::lexical_cast(text, value) && value >= lowest && value <= highest) return std::string();
            return "'" + text + "' is not " + what + format(" from %g to %g", lowest, highest);
        },
        "");
    return *this;
}

Option& Option::oneOf(const std::vector<std::string>& values) {
    option_->check(CLI::IsMember(values).description(""));
    return *this;
}

Option& Option::defaultsTo(const std::string& value) {
    option_->expected(0, 1)->default_str(value);
    return *this;
}

Option& Option::showDefault() {
    option_->capture_default_str();
    return *this;
}

template <typename Value>
Option Command::option(const std::string& name, Value& value, const std::string& help) {
    return Option(app_->add_option(name, value, help));
}

template Option Command::option(const std::string&, std::string&, const std::string&);
template Option Command::option(const std::string&, std::vector<std::string>&, const std::string&);
template Option Command::option(const std::string&, int&, const std::string&);
template Option Command::option(const std::string&, unsigned&, const std::string&);
template Option Command::option(const std::string&, std::size_t&, const std::string&);
template Option Command::option(const std::string&, double&, const std::string&);
template Option Command::option(const std::string&, std::optional<double>&, const std::string&);

void Command::flag(const std::string& name, bool& value, const std::string& help) { app_->add_flag(name, value, help); }

void Command::footer(const std::string& text) { app_->footer(text); }

void Command::run(std::function<void()> action) {
    app_->callback([action = std::move(action)] {
        try {
            action();
        } catch (const UsageError& e) {
            throw CLI::ValidationError(e.option, e.reason);
        }
    });
}

CommandLine::CommandLine(const std::string& name, const std::string& description, const std::string& version)
    : app_(std::make_unique<CLI::App>(description, name)) {
    app_->set_version_flag("--version", version);
    app_->require_subcommand(1);
}

CommandLine::~CommandLine() = default;

Command CommandLine::add(const std::string& name, const std::string& description) {
    return Command(app_->add_subcommand(name, description));
}

void CommandLine::footer(const std::string& text) { app_->footer(text); }

bool CommandLine::run(int argc, char** argv) {
    try {
        app_->parse(argc, argv);
    } catch (const CLI::ParseError& e) {
        return app_->exit(e, std::cout, std::cerr) == 0;
    }
    return true;
}
