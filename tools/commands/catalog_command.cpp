// SPDX-License-Identifier: BSD-3-Clause
#include "catalog/database_info.h"
#include "catalog/database_writer.h"
#include "catalog/import.h"
#include "text/quoted.h"
#include "tools/commands/commands.h"
#include "tools/files/catalog_failure.h"
#include "tools/files/output_file.h"
#include "tools/say.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

namespace velmora {

namespace fs = std::filesystem;

struct ImportArguments {
    std::vector<std::string> sources;
    std::string out;
};

// Missing files are named before any work is done.
static void check_is_there(const std::string& argument, const std::string& path) {
    if (path.empty())
        throw UsageFailure(argument, "the file name is empty");
    std::error_code ignored;
    if (fs::status(path, ignored).type() == fs::file_type::not_found)
        throw WorkFailure(path, "No such file or directory");
}

// ---- catalog import --------------------------------------------------------------------------

static void import(const ImportArguments& arguments) {
    if (arguments.out.empty())
        throw UsageFailure("-o", "the file name is empty");
    // Check the arguments, as importing may take minutes.
    check_output(arguments.out, arguments.sources);
    for (const std::string& source : arguments.sources)
        check_is_there("SOURCE", source);

    ImportedStars stars;
    for (const std::string& source : arguments.sources)
        working_on(source, [&] { import_catalog(source, stars); });

    const std::string count = std::to_string(stars.records.size());
    working_on(arguments.out, [&] {
        const SignalsHeld held;
        write_star_database(arguments.out, std::move(stars.records));
    });
    say(arguments.out + ": stars written: " + count +
        ", with known distance: " + std::to_string(stars.known_distances) +
        ", with known colour: " + std::to_string(stars.known_colors));
}

// ---- catalog info ----------------------------------------------------------------------------

// What it holds goes to standard output, as the answer to the command.
static void print_info(const std::string& path) {
    check_is_there("FILE", path);
    const DatabaseInfo info = working_on(path, [&] { return inspect_star_database(path); });

    printf("%s\n%s", printable(path).c_str(), describe(info).c_str());
}

// ---- Arguments -------------------------------------------------------------------------------

static void add_import_command(CLI::App& catalog) {
    CLI::App* command = catalog.add_subcommand(
        "import", "Turn star catalogues into a star database, brightest star first.");
    command->footer("Examples:\n"
                    "  velmora catalog import stars.csv.gz -o sky.velmora\n"
                    "  velmora catalog import north.csv south.csv -o sky.velmora");
    const auto arguments = std::make_shared<ImportArguments>();
    command
        ->add_option("SOURCE", arguments->sources,
                     "A star table, CSV or CSV packed with gzip; the stars of several are put "
                     "together")
        ->required()
        ->type_name("");
    command->add_option("-o,--out", arguments->out, "The database to write")
        ->required()
        ->type_name("FILE");
    command->callback([arguments] { import(*arguments); });
}

static void add_database_info_command(CLI::App& catalog) {
    CLI::App* command = catalog.add_subcommand(
        "info", "Show what a star database holds: version, stars, ranges, magnitudes, oddities.");
    command->footer("Examples:\n"
                    "  velmora catalog info sky.velmora");
    const auto path = std::make_shared<std::string>();
    command->add_option("FILE", *path, "A star database")->required()->type_name("");
    command->callback([path] { print_info(*path); });
}

void add_catalog_command(CLI::App& program) {
    CLI::App* catalog = program.add_subcommand(
        "catalog", "Make star databases from catalogues, and look into them.");
    catalog->footer("Examples:\n"
                    "  velmora catalog import stars.csv.gz -o sky.velmora\n"
                    "  velmora catalog info sky.velmora");
    catalog->callback([catalog] {
        if (catalog->get_subcommands().empty())
            throw UsageFailure("catalog", "name a command: import or info");
    });
    add_import_command(*catalog);
    add_database_info_command(*catalog);
}

} // namespace velmora
