#include "Host/kruteinctl/Options.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <sstream>

#include "Common/Version.h"
#include "Host/kruteinctl/Failure.h"
#include "Host/kruteinctl/HelpFormatter.h"
#include "Host/kruteinctl/Suggestion.h"
#include "Host/kruteinctl/Text.h"

namespace {

constexpr char kBackupHelp[] = "Folder of a backup, or the one around it with its record";
constexpr int kMaxTimeoutSeconds = 3600;
constexpr char kExamples[] =
    "Examples:\n"
    "  kruteinctl backup --to ~/Backups\n"
    "  kruteinctl backup --types messages,whatsapp --to ~/Backups\n"
    "  kruteinctl list ~/Backups\n"
    "'kruteinctl COMMAND --help' has more.";

std::string ExitCodeHelp() {
    std::string help = "Exit codes:";
    for (const ExitCodeRow& row : ExitCodeTable()) {
        help += fmt::format("\n  {:3} {}", static_cast<int>(row.code), row.meaning);
    }
    return help;
}

class Parser {
 public:
    Parser() {
        m_app.set_version_flag("--version", "kruteinctl " KRUTEIN_VERSION, "Print the version and end");
        m_app.require_subcommand(1);
        m_app.formatter(std::make_shared<HelpFormatter>());
        m_app.footer(std::string(kExamples) + "\n\n" + ExitCodeHelp());
        AddBackup();
        AddRestore();
        AddSize();
        AddList();
        AddFiles();
        AddVerify();
        AddShow();
        AddDevices();
        AddInfo();
    }

    std::optional<Options> Parse(int count, const char* const* words, std::string& text) {
        RefuseUnknownCommand(count, words);
        try {
            m_app.parse(count, words);
        } catch (const CLI::ParseError& error) {
            std::ostringstream out;
            std::ostringstream errors;
            if (m_app.exit(error, out, errors) != 0) {
                RefuseUnknownOption();
                throw Failure(ExitCode::kUsage, Message(errors.str()));
            }
            text = out.str();
            return std::nullopt;
        }
        if (m_options.folder.empty() && m_options.command == CommandName::kBackup)
            throw Failure(ExitCode::kUsage, "--to is required. " + SeeHelp());
        if (m_json && m_quiet) throw Failure(ExitCode::kUsage, "--json and --quiet exclude each other");
        if (m_json) m_options.output = Output::kJson;
        m_options.timeout = std::chrono::seconds(m_timeoutSeconds);
        if (m_quiet) m_options.output = Output::kQuiet;
        return m_options;
    }

 private:
    CLI::App* AddCommand(CommandName command, const std::string& description, const std::string& example) {
        CLI::App* const sub = m_app.add_subcommand(NameOf(command), description);
        sub->group("Commands");
        sub->callback([this, command] { m_options.command = command; });
        sub->add_flag("--json", m_json, "Print one JSON object a line");
        sub->footer("Example:\n  kruteinctl " + example);
        return sub;
    }

    /// A command that runs the backup tool for a device.
    CLI::App* AddRun(CommandName command, const std::string& description, const std::string& example) {
        CLI::App* const sub = AddCommand(command, description, example);
        AddUdid(sub);
        AddQuiet(sub);
        return sub;
    }

    void AddQuiet(CLI::App* command) { command->add_flag("-q,--quiet", m_quiet, "Print nothing but errors"); }

    /// May be left out, unless the caller demands it.
    CLI::Option* AddUdid(CLI::App* command) {
        return command->add_option("UDID", m_options.udid,
                                   "The device's identifier: 40 hexadecimal digits, or 8 and 16 with a dash "
                                   "between; by default the only connected device");
    }

    void AddBackup() {
        CLI::App* const backup = AddRun(CommandName::kBackup, "Make a backup of a device",
                                        "backup 00008110-000A2D3E1E08801E --to ~/Backups\n"
                                        "  kruteinctl backup --types messages,whatsapp --to ~/Backups");
        CLI::Option* const to =
            backup->add_option("--to", m_options.folder, "Folder in which the backup shall lie")
                ->type_name("FOLDER");
        CLI::Option* const types = backup
                                       ->add_option("--types", m_options.types,
                                                    "Keep only the data of these apps: messages, whatsapp, "
                                                    "wechat, contacts, separated by commas; "
                                                    "or full. Adds a record, which 'list' shows")
                                       ->type_name("LIST");
        backup->add_flag("--keep-failed", m_options.keepFailed, "Leave what a failed typed backup has made")
            ->needs(types);
        CLI::Option* const dryRun =
            backup
                ->add_flag("--dry-run", m_options.dryRun,
                           "Tell which files of an earlier full backup, given with --from, would be kept")
                ->needs(types)
                ->excludes(to);
        CLI::Option* const from =
            backup->add_option("--from", m_options.folder, "Folder with a full backup, for --dry-run")
                ->type_name("FOLDER")
                ->needs(dryRun);
        dryRun->needs(from);
    }

    void AddRestore() {
        CLI::App* const restore = AddRun(CommandName::kRestore, "Restore a device from a backup",
                                         "restore 00008110-000A2D3E1E08801E --from ~/Backups");
        AddFrom(restore);
        restore->add_flag("--force", m_options.force,
                          "Restore also from a backup that holds single apps only");
    }

    void AddSize() {
        CLI::App* const size = AddRun(CommandName::kSize, "Tell the size of a backup",
                                      "size 00008110-000A2D3E1E08801E --from ~/Backups");
        size->get_option("UDID")->required();
        AddFrom(size);
    }

    void AddList() {
        AddCommand(CommandName::kList, "List the backups below a folder", "list ~/Backups")
            ->add_option("DIR", m_options.folder, "Folder to look in")
            ->required();
    }

    void AddFiles() {
        CLI::App* const files = AddCommand(CommandName::kFiles, "List what a backup's catalogue lists",
                                           "files ~/Backups/00008110-000A2D3E1E08801E --path sms.db");
        files
            ->add_option("BACKUP", m_options.folder,
                         std::string(kBackupHelp) + "; or a Manifest.db or Manifest.mbdb")
            ->required();
        files->add_option("--domain", m_options.domain, "Only entries with this in their domain, in any case")
            ->type_name("TEXT");
        files->add_option("--path", m_options.path, "Only entries with this in their path, in any case")
            ->type_name("TEXT");
    }

    void AddVerify() {
        CLI::App* const verify = AddCommand(CommandName::kVerify, "Check a backup's files and app databases",
                                            "verify ~/Backups/00008110-000A2D3E1E08801E");
        verify->add_option("BACKUP", m_options.folder, kBackupHelp)->required();
        AddQuiet(verify);
    }

    void AddShow() {
        AddCommand(CommandName::kShow, "Show a backup's record and what it keeps of each app",
                   "show ~/Backups/00008110-000A2D3E1E08801E")
            ->add_option("BACKUP", m_options.folder, kBackupHelp)
            ->required();
    }

    void AddDevices() {
        CLI::App* const devices =
            AddCommand(CommandName::kDevices, "List the connected devices", "devices --watch");
        devices->add_flag("--watch", m_options.watch, "Tell each device that comes or goes, until Ctrl-C");
        AddTimeout(devices);
    }

    void AddInfo() {
        CLI::App* const info = AddCommand(CommandName::kInfo, "Tell what a connected device says of itself",
                                          "info 00008110-000A2D3E1E08801E");
        AddUdid(info);
        AddTimeout(info);
    }

    void AddTimeout(CLI::App* command) {
        command
            ->add_option("--timeout", m_timeoutSeconds,
                         "Seconds to wait for a device at most; 30 unless given")
            ->type_name("SECONDS")
            ->check(CLI::Range(1, kMaxTimeoutSeconds).description(""));
    }

    void AddFrom(CLI::App* command) {
        command
            ->add_option("--from", m_options.folder,
                         "Folder in which backups of the device lie (the newest is taken), or one backup")
            ->type_name("FOLDER")
            ->required();
    }

    /// The parser would only say that a command is missing.
    void RefuseUnknownCommand(int count, const char* const* words) const {
        if (count < 2 || words[1][0] == '-') return;
        std::vector<std::string> names;
        for (const CLI::App* command : m_app.get_subcommands({}))
            names.push_back(command->get_name());
        if (std::find(names.begin(), names.end(), words[1]) != names.end()) return;
        throw Failure(ExitCode::kUsage, fmt::format("there is no command '{}'{} {}", Printable(words[1]),
                                                    QuestionOrStop(Suggestion(words[1], names)), SeeHelp()));
    }

    /// Of several mistakes that one is told that most likely is behind the others.
    void RefuseUnknownOption() const {
        const CLI::App& command = Meant();
        std::vector<std::string> names;
        for (const CLI::Option* option : command.get_options()) {
            for (const std::string& name : option->get_lnames())
                names.push_back("--" + name);
        }
        for (const std::string& word : m_app.remaining(true)) {
            const std::string name = word.substr(0, word.find('='));
            if (name.size() < 2 || name[0] != '-' || name == "--") continue;
            const std::string whose = &command == &m_app ? "there is" : command.get_name() + " has";
            throw Failure(ExitCode::kUsage, fmt::format("{} no option '{}'{} {}", whose, Printable(name),
                                                        QuestionOrStop(Suggestion(name, names)), SeeHelp()));
        }
    }

    static std::string QuestionOrStop(const std::string& suggestion) {
        return suggestion.empty() ? "." : suggestion;
    }

    /// The command that was typed, or the whole program.
    const CLI::App& Meant() const {
        const std::vector<CLI::App*> typed = m_app.get_subcommands();
        return typed.empty() ? m_app : *typed.front();
    }

    std::string SeeHelp() const {
        if (&Meant() == &m_app) return "Run 'kruteinctl --help' for the commands";
        return fmt::format("Run 'kruteinctl {} --help' for its options", Meant().get_name());
    }

    /// The library's message without its trailer, on one line.
    std::string Message(std::string text) const {
        text.resize(std::min(text.size(), text.find("\nRun with")));
        TrimEnd(text);
        return fmt::format("{}. {}", Printable(text), SeeHelp());
    }

    static void TrimEnd(std::string& text) { text.erase(text.find_last_not_of(" \n") + 1); }

    CLI::App m_app{"kruteinctl: backs up, restores and inspects iOS devices", "kruteinctl"};
    Options m_options;
    int m_timeoutSeconds = 30;
    bool m_quiet = false;
    bool m_json = false;
};

}  // namespace

const char* NameOf(CommandName command) {
    switch (command) {
        case CommandName::kBackup:
            return "backup";
        case CommandName::kRestore:
            return "restore";
        case CommandName::kSize:
            return "size";
        case CommandName::kList:
            return "list";
        case CommandName::kFiles:
            return "files";
        case CommandName::kVerify:
            return "verify";
        case CommandName::kShow:
            return "show";
        case CommandName::kDevices:
            return "devices";
        case CommandName::kInfo:
            return "info";
    }
    return "";
}

std::optional<Options> ParseOptions(int count, const char* const* words, std::string& text) {
    return Parser().Parse(count, words, text);
}

bool WantsJson(int count, const char* const* words) {
    return std::find(words, words + count, std::string("--json")) != words + count;
}
