// The command ormel: its command line, and what becomes of errors.
#include <algorithm>
#include <clocale>
#include <csignal>
#include <functional>
#include <iostream>

#include <CLI/CLI.hpp>
#include <ormeldb.h>

#include "commands.h"
#include "error.h"
#include "output.h"

namespace {

enum ExitCode { kDone = 0, kFailed = 1, kWrongUse = 2 };

// What the words of the command line fill in.
struct Options {
    cli::Place place;
    cli::HomeRequest home;
    std::string text;
    std::string table;
    std::vector<std::string> where;
    cli::LoadRequest load;
    cli::SelectRequest select;
    cli::ChangeRequest change;
};

constexpr const char *kValues = "the values; the word NULL without quotes is no value";

struct Command {
    CLI::App *words;
    bool needsHome;
    std::function<void()> run;
};

void addTable(CLI::App *command, std::string &table) {
    command->add_option("TABLE", table, "the table's name")->type_name("")->required();
}

// One condition for each option, so that the word after it is not taken for another.
void addWhere(CLI::App *command, std::vector<std::string> &where) {
    command->add_option("--where", where, "only records that meet the condition; give it again for more: all must hold")
        ->type_name("'COL OP VALUE'")
        ->allow_extra_args(false);
}

void addAll(CLI::App *command, cli::ChangeRequest &change) {
    command->add_flag("--all", change.all, "every record of the table");
}

CLI::Option *addAssignments(CLI::App *command, cli::ChangeRequest &change, const char *what) {
    return command->add_option("COL=VALUE", change.assignments, what)->type_name("")->required();
}

// An option whose value may be missing as far as the parser is concerned: the command says better what it should be.
void addValue(CLI::App *command, const char *name, std::optional<std::string> &value, const char *type,
              const char *what) {
    command->add_option(name, value, what)->type_name(type)->expected(0, 1);
}

Command addNew(CLI::App &app, Options &options) {
    CLI::App *words = app.add_subcommand("new", "Make a home: configuration, password, places for data and log");
    cli::HomeRequest &home = options.home;
    words->add_option("DIR", home.directory, "the directory to make")->type_name("")->required();
    words->add_option("--password-file", home.passwordFile, "take the database password from a file")
        ->type_name("FILE");
    words->add_option("--engine", home.engine, "sqlite, embedded, or postgres, a server; else sqlite")
        ->type_name("NAME");
    addValue(words, "--host", home.host, "HOST", "the server, or several with commas between them");
    addValue(words, "--port", home.port, "PORT", "the server's port; else 5432");
    addValue(words, "--dbname", home.dbname, "NAME", "the database on the server");
    addValue(words, "--user", home.user, "NAME", "the user of the database");
    addValue(words, "--sslmode", home.sslMode, "MODE",
             "DISABLED, PREFERRED, REQUIRED, VERIFY_CA or VERIFY_FULL; else PREFERRED");
    addValue(words, "--sslrootcert", home.sslRootCert, "FILE",
             "the authority that the server's certificate is checked against");
    return {words, false, [&] { cli::makeHome(home); }};
}

Command addCheck(CLI::App &app, Options &) {
    return {app.add_subcommand("check", "Connect, and tell what the database is and how far away"), true,
            cli::checkDatabase};
}

Command addSql(CLI::App &app, Options &options) {
    CLI::App *words = app.add_subcommand("sql", "Run one SQL statement and commit it");
    words->add_option("TEXT", options.text, "the statement")->type_name("")->required();
    return {words, true, [&] { cli::runSql(options.text); }};
}

Command addDescribe(CLI::App &app, Options &options) {
    CLI::App *words = app.add_subcommand("describe", "Show a table's columns and the layout of its records");
    addTable(words, options.table);
    return {words, true, [&] { cli::describeTable(options.table); }};
}

Command addLoad(CLI::App &app, Options &options) {
    cli::LoadRequest &load = options.load;
    CLI::App *words = app.add_subcommand("load", "Insert all records of a CSV file, or none");
    addTable(words, load.table);
    words->add_option("FILE", load.file, "the CSV file")->type_name("")->required();
    words->add_option("--separator", load.separator, "what stands between fields, \\t for the tab; else a comma")
        ->type_name("C");
    addValue(words, "--skip", load.skip, "N", "pass over the first N records; 1 for a heading");
    addValue(words, "--batch", load.batch, "N", "insert so many rows with one statement; else 1000");
    addValue(words, "--commit-every", load.commitEvery, "N",
             "keep what is in after every N rows, whatever comes later");
    return {words, true, [&] { cli::loadFile(load, options.place); }};
}

Command addCount(CLI::App &app, Options &options) {
    CLI::App *words = app.add_subcommand("count", "Count records");
    addTable(words, options.table);
    addWhere(words, options.where);
    return {words, true, [&] { cli::countRecords(options.table, options.where); }};
}

Command addShow(CLI::App &app, Options &options) {
    CLI::App *words = app.add_subcommand("show", "Show records");
    addTable(words, options.table);
    addWhere(words, options.where);
    return {words, true, [&] { cli::showRecords(options.table, options.where); }};
}

Command addDelete(CLI::App &app, Options &options) {
    CLI::App *words = app.add_subcommand("delete", "Delete records");
    addTable(words, options.change.table);
    addWhere(words, options.change.where);
    addAll(words, options.change);
    return {words, true, [&] { cli::deleteRecords(options.change); }};
}

Command addUpdate(CLI::App &app, Options &options) {
    CLI::App *words = app.add_subcommand("update", "Give columns of records new values");
    addTable(words, options.change.table);
    addAssignments(words, options.change, "the new values");
    addWhere(words, options.change.where);
    addAll(words, options.change);
    return {words, true, [&] { cli::updateRecords(options.change); }};
}

// What get and dump have in common.
void addSelect(CLI::App *command, cli::SelectRequest &select) {
    addTable(command, select.table);
    addWhere(command, select.where);
    addValue(command, "--fields", select.fields, "a,b", "only these columns, in this order; else all");
}

Command addGet(CLI::App &app, Options &options) {
    cli::SelectRequest &select = options.select;
    CLI::App *words = app.add_subcommand("get", "Show rows with their NULLs and large objects");
    addSelect(words, select);
    addValue(words, "--limit", select.limit, "N", "at most so many rows");
    addValue(words, "--offset", select.offset, "N", "pass over so many rows first; goes with --limit");
    words->add_flag("--json", select.json, "as a JSON array");
    words->add_flag("--csv", select.csv, "as CSV, with a heading");
    addValue(words, "--lob", select.lob, "COL", "write this value of the one row that is meant, byte for byte");
    return {words, true, [&] { cli::getRows(select); }};
}

Command addDump(CLI::App &app, Options &options) {
    cli::SelectRequest &select = options.select;
    CLI::App *words = app.add_subcommand("dump", "Write out a table of any size, row by row");
    addSelect(words, select);
    words->add_flag("--csv", select.csv, "as CSV, with a heading; also without this word");
    words->add_flag("--json", select.json, "as JSON, an object a line");
    return {words, true, [&] { cli::dumpRows(select); }};
}

Command addPut(CLI::App &app, Options &options) {
    CLI::App *words = app.add_subcommand("put", "Insert a row");
    addTable(words, options.change.table);
    addAssignments(words, options.change, kValues)->required(false); // files will do
    words->add_option("--lob", options.change.files, "a file that holds the column's text or bytes; may be given again")
        ->type_name("COL=FILE")
        ->allow_extra_args(false);
    return {words, true, [&] { cli::putRow(options.change, options.place); }};
}

Command addSet(CLI::App &app, Options &options) {
    CLI::App *words = app.add_subcommand("set", "Give columns of rows new values, also NULL and large objects");
    addTable(words, options.change.table);
    addAssignments(words, options.change, kValues);
    addWhere(words, options.change.where);
    addAll(words, options.change);
    return {words, true, [&] { cli::setRows(options.change); }};
}

std::vector<Command> addCommands(CLI::App &app, Options &options) {
    app.require_subcommand(0, 1);
    app.get_formatter()->label("SUBCOMMAND", "COMMAND");
    app.fallthrough(); // so that --home may also stand behind the command
    app.set_version_flag("--version", std::string("ormel ") + ORMEL_Version());
    app.add_option("--home", options.place.home,
                   "the home to work in; else the one whose bin/ is the current directory")
        ->type_name("DIR");
    app.add_option("--called-from", options.place.calledFrom)->group(""); // not for people: see enterHome
    std::vector<Command> commands;
    for (const auto add : {addNew, addCheck, addSql, addDescribe, addLoad, addCount, addShow, addGet, addDump, addPut,
                           addSet, addDelete, addUpdate})
        commands.push_back(add(app, options));
    for (const Command &command : commands)
        command.words->group("Commands");
    app.footer("ormel COMMAND --help tells more about a command.");
    return commands;
}

int complain(ExitCode code, std::string message) {
    std::replace(message.begin(), message.end(), '\n', ' ');
    std::cout.flush();
    std::cerr << "ormel: " << message << '\n';
    return code;
}

int run(CLI::App &app, const std::vector<Command> &commands, const Options &options, int argc, char **argv) {
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &help) {
        app.exit(help);
        cli::flush(std::cout);
        return kDone;
    }
    const auto given =
        std::find_if(commands.begin(), commands.end(), [](const Command &command) { return command.words->parsed(); });
    if (given == commands.end())
        throw cli::UsageError("say what to do (ormel --help tells the commands)");
    if (given->needsHome)
        cli::enterHome(options.place, {argv, argv + argc});
    given->run();
    cli::flush(std::cout);
    return kDone;
}

} // namespace

int main(int argc, char **argv) {
    std::setlocale(LC_CTYPE, "C.UTF-8"); // the library's text is UTF-8, whatever the terminal's language
    std::signal(SIGPIPE, SIG_IGN);       // a pipe that its reader closed is a write that fails
    CLI::App app("Keeps records in a database through ormeldb", "ormel");
    try {
        Options options;
        const std::vector<Command> commands = addCommands(app, options);
        return run(app, commands, options, argc, argv);
    } catch (const CLI::ParseError &error) {
        return complain(kWrongUse, std::string(error.what()) + " (ormel --help tells the commands)");
    } catch (const cli::UsageError &error) {
        return complain(kWrongUse, error.what());
    } catch (const std::exception &error) {
        return complain(kFailed, error.what());
    }
}
