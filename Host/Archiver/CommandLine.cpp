#include "Host/Archiver/CommandLine.h"

#include <charconv>
#include <cstddef>
#include <system_error>
#include <vector>

namespace krutein {
namespace {

constexpr unsigned Bit(Verb verb) {
    return 1U << static_cast<unsigned>(verb);
}

constexpr unsigned kAllVerbs = Bit(Verb::kBackup) | Bit(Verb::kRestore) | Bit(Verb::kInfo) |
                               Bit(Verb::kChangePassword) | Bit(Verb::kRestoreSettings);

struct VerbWord {
    const char* word;
    Verb verb;
};

constexpr VerbWord kVerbs[] = {
    {"-backup", Verb::kBackup},
    {"-restore", Verb::kRestore},
    {"-info", Verb::kInfo},
    {"-changepasswd", Verb::kChangePassword},
    {"-restore_all_setting", Verb::kRestoreSettings},
};

/// An option takes the next word as its value, whatever that looks like: a password may begin with '-'.
struct Option {
    const char* word;
    std::string CommandLine::*text;  ///< where the value goes, or
    int CommandLine::*number;
    unsigned verbs;  ///< that have the option
    bool required;   ///< by those verbs
};

constexpr unsigned kWithFolder =
    Bit(Verb::kBackup) | Bit(Verb::kRestore) | Bit(Verb::kInfo) | Bit(Verb::kRestoreSettings);
constexpr unsigned kWithSource = Bit(Verb::kInfo) | Bit(Verb::kRestoreSettings);

constexpr Option kOptions[] = {
    {"-version", &CommandLine::version, nullptr, kWithSource, true},
    {"-backuppath", &CommandLine::backupPath, nullptr, kWithFolder, true},
    {"-source", &CommandLine::source, nullptr, kWithSource, true},
    {"-target", &CommandLine::target, nullptr, kAllVerbs, true},
    {"-old", &CommandLine::oldPassword, nullptr, Bit(Verb::kChangePassword), true},
    {"-new", &CommandLine::newPassword, nullptr, Bit(Verb::kChangePassword), true},
    {"-pipe", nullptr, &CommandLine::pipe, kAllVerbs, true},
    {"-model", nullptr, &CommandLine::model, kAllVerbs, true},
    {"-restore_option", nullptr, &CommandLine::restoreOption, Bit(Verb::kRestore), false},
};

[[noreturn]] void Refuse(const std::string& word, const std::string& reason) {
    throw CommandLineError("'" + word + "' " + reason);
}

std::vector<std::string> Split(const std::string& argument) {
    std::vector<std::string> words;
    std::size_t begin = 0;
    for (std::size_t bar = argument.find('|'); bar != std::string::npos; bar = argument.find('|', begin)) {
        words.push_back(argument.substr(begin, bar - begin));
        begin = bar + 1;
    }
    words.push_back(argument.substr(begin));
    return words;
}

int NumberOf(const Option& option, const std::string& value) {
    int number = 0;
    const char* const end = value.data() + value.size();
    const auto [stop, error] = std::from_chars(value.data(), end, number);
    if (error != std::errc() || stop != end) Refuse(value, std::string("is no number for ") + option.word);
    return number;
}

class Parser {
 public:
    CommandLine Parse(const std::string& argument) {
        const std::vector<std::string> words = Split(argument);
        for (std::size_t i = 0; i < words.size(); ++i) {
            if (TakeVerb(words[i])) continue;
            const Option& option = OptionOf(words[i]);
            if (i + 1 == words.size()) Refuse(words[i], "has no value");
            TakeValue(option, words[++i]);
        }
        Check(argument);
        return m_command;
    }

 private:
    static unsigned BitOf(const Option& option) {
        return 1U << static_cast<unsigned>(&option - std::begin(kOptions));
    }

    bool TakeVerb(const std::string& word) {
        for (const VerbWord& known : kVerbs) {
            if (word != known.word) continue;
            if (m_verbWord != nullptr) Refuse(word, std::string("cannot follow ") + m_verbWord);
            m_verbWord = known.word;
            m_command.verb = known.verb;
            return true;
        }
        return false;
    }

    static const Option& OptionOf(const std::string& word) {
        for (const Option& option : kOptions) {
            if (word == option.word) return option;
        }
        Refuse(word, "is not understood");
    }

    void TakeValue(const Option& option, const std::string& value) {
        if ((m_given & BitOf(option)) != 0) Refuse(option.word, "is given twice");
        m_given |= BitOf(option);
        if (option.text != nullptr) {
            m_command.*option.text = value;
        } else {
            m_command.*option.number = NumberOf(option, value);
        }
    }

    void Check(const std::string& argument) const {
        if (m_verbWord == nullptr) Refuse(argument, "does not say what to do");
        for (const Option& option : kOptions) {
            const bool given = (m_given & BitOf(option)) != 0;
            const bool known = (option.verbs & Bit(m_command.verb)) != 0;
            if (given && !known) Refuse(option.word, std::string("is no option of ") + m_verbWord);
            if (!given && known && option.required) {
                Refuse(option.word, std::string("is missing, which ") + m_verbWord + " needs");
            }
        }
    }

    CommandLine m_command;
    const char* m_verbWord = nullptr;
    unsigned m_given = 0;  ///< a bit for each of kOptions
};

}  // namespace

CommandLine ParseCommandLine(const std::string& argument) {
    return Parser().Parse(argument);
}

std::string UsageText() {
    return "Stands in for an iOS device's backup service, with sample devices. It is called with one\n"
           "argument, and writes its messages to the descriptor PIPE:\n"
           "\n"
           "  HandsetArchiver '-backup|-backuppath|FOLDER|-target|UDID|-pipe|PIPE|-model|N'\n"
           "  HandsetArchiver '-restore|-backuppath|FOLDER|-target|UDID|-pipe|PIPE|-model|N'\n"
           "  HandsetArchiver "
           "'-restore|-backuppath|FOLDER|-target|UDID|-pipe|PIPE|-model|N|-restore_option|N'\n"
           "  HandsetArchiver '-version|16.0|-info|-backuppath|FOLDER|-source|UDID|-target|UDID|-pipe|PIPE"
           "|-model|N'\n"
           "  HandsetArchiver '-changepasswd|-target|UDID|-old|OLD|-new|NEW|-pipe|PIPE|-model|N'\n"
           "  HandsetArchiver '-version|V|-restore_all_setting|-backuppath|FOLDER|-source|UDID|-target|UDID"
           "|-pipe|PIPE|-model|N'\n"
           "\n"
           "Environment:\n"
           "  KRUTEIN_SAMPLE_DEVICES           folder of the device descriptions\n"
           "  KRUTEIN_SAMPLE_STATE             folder where the devices' passwords are kept\n"
           "  KRUTEIN_SAMPLE_FILES_PER_SECOND  slows a run down\n";
}

}  // namespace krutein
