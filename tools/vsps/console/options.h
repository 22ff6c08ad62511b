// Commands and their options on the command line. Only options.cpp includes the library that parses them.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

// Options that do not fit together; ends the program like any other bad usage.
struct UsageError {
    std::string option, reason;
};

class Option {
  public:
    explicit Option(CLI::Option* option) : option_(option) {}

    Option& required();
    Option& atLeast(int values);
    Option& takes(const std::string& value);  // how the help calls its value
    Option& within(double lowest, double highest, const std::string& what = "a number");
    Option& oneOf(const std::vector<std::string>& values);
    Option& defaultsTo(const std::string& value);  // where the option is given without one
    Option& showDefault();                         // the variable's value so far, in the help

  private:
    CLI::Option* option_;
};

class Command {
  public:
    explicit Command(CLI::App* app) : app_(app) {}

    // The variables have to live until the command has run. A name that begins with no hyphen is that of an argument.
    // Value is a std::string or several of them in a vector, an int, unsigned or std::size_t, a double or an optional one.
    template <typename Value>
    Option option(const std::string& name, Value& value, const std::string& help);
    void flag(const std::string& name, bool& value, const std::string& help);
    void footer(const std::string& text);
    void run(std::function<void()> action);

  private:
    CLI::App* app_;
};

class CommandLine {
  public:
    CommandLine(const std::string& name, const std::string& description, const std::string& version);
    ~CommandLine();

    Command add(const std::string& name, const std::string& description);
    void footer(const std::string& text);
    // Runs the command that is asked for, or prints help; false after bad usage, which has been reported.
    bool run(int argc, char** argv);

  private:
    std::unique_ptr<CLI::App> app_;
};
