#include "Tools/devicesim/Faults.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace devicesim {
namespace {

enum class Argument { kNone, kKey, kPlace, kPlaceAndDelay, kCount };

struct FaultRow {
    const char* name;
    FaultKind kind;
    Argument argument;
    const char* help;
};

constexpr std::array kRows = {
    FaultRow{"refuse", FaultKind::kRefuse, Argument::kKey, "the key may not be read"},
    FaultRow{"missing", FaultKind::kMissing, Argument::kKey, "the device has no such key"},
    FaultRow{"wrong-type", FaultKind::kWrongType, Argument::kKey,
             "a number for a text, or a text for a number"},
    FaultRow{"late", FaultKind::kLate, Argument::kPlaceAndDelay, "answers only after so many milliseconds"},
    FaultRow{"silent", FaultKind::kSilent, Argument::kPlace, "never answers"},
    FaultRow{"half", FaultKind::kHalf, Argument::kPlace, "sends half a frame, then ends the connection"},
    FaultRow{"garbage", FaultKind::kGarbage, Argument::kPlace,
             "answers with something else than a property list"},
    FaultRow{"huge", FaultKind::kHuge, Argument::kPlace, "announces 4 GB, then ends the connection"},
    FaultRow{"detach", FaultKind::kDetach, Argument::kPlace, "is pulled out instead of answering"},
    FaultRow{"drop-after", FaultKind::kDropAfter, Argument::kCount,
             "ends a lockdown connection after so many answers"},
    FaultRow{"unpaired", FaultKind::kUnpaired, Argument::kNone, "has no pair record yet"},
    FaultRow{"trust-dialog", FaultKind::kTrustDialog, Argument::kNone,
             "unpaired, and waits for its owner's answer"},
    FaultRow{"no-trust", FaultKind::kNoTrust, Argument::kNone, "unpaired, and its owner has refused"},
    FaultRow{"forgotten", FaultKind::kForgotten, Argument::kNone, "does not know the pair record any more"},
    FaultRow{"locked", FaultKind::kLocked, Argument::kNone, "waits for its passcode"},
    FaultRow{"tls-silence", FaultKind::kTlsSilence, Argument::kNone, "wants to encrypt, then says nothing"},
};

constexpr int kMaxNumber = 600'000;

const char* ArgumentHelp(Argument argument) {
    switch (argument) {
        case Argument::kNone:
            return "";
        case Argument::kKey:
            return "=KEY";
        case Argument::kPlace:
            return "=REQUEST[.KEY]";
        case Argument::kPlaceAndDelay:
            return "=REQUEST[.KEY]:MS";
        case Argument::kCount:
            return "=N";
    }
    return "";
}

int NumberOf(const std::string& text, const std::string& whole) {
    const bool isNumber =
        !text.empty() && text.size() <= 6 && text.find_first_not_of("0123456789") == std::string::npos;
    const int number = isNumber ? std::stoi(text) : kMaxNumber + 1;
    if (number > kMaxNumber) {
        throw FaultError(fmt::format("'{}': '{}' is no number from 0 to {}", whole, text, kMaxNumber));
    }
    return number;
}

/// Splits at the first `separator`. \return what is behind it; "" when there is none.
std::string CutAt(std::string& text, char separator) {
    const std::size_t at = text.find(separator);
    if (at == std::string::npos) return {};
    std::string behind = text.substr(at + 1);
    text.resize(at);
    return behind;
}

Place PlaceOf(std::string text) {
    Place place;
    place.key = CutAt(text, '.');
    place.request = text;
    return place;
}

void TakeArgument(Fault& fault, Argument kind, std::string argument, const std::string& whole) {
    if (argument.empty() != (kind == Argument::kNone)) {
        throw FaultError(fmt::format("'{}': {}", whole,
                                     argument.empty() ? "an argument is missing" : "takes no argument"));
    }
    switch (kind) {
        case Argument::kNone:
            return;
        case Argument::kKey:
            fault.key = argument;
            return;
        case Argument::kCount:
            fault.count = NumberOf(argument, whole);
            return;
        case Argument::kPlaceAndDelay:
            fault.delay = std::chrono::milliseconds(NumberOf(CutAt(argument, ':'), whole));
            [[fallthrough]];
        case Argument::kPlace:
            fault.place = PlaceOf(argument);
            return;
    }
}

bool IsFor(const Fault& fault, const std::string& udid) {
    return fault.udid.empty() || fault.udid == udid;
}

bool Covers(const Place& rule, const Place& place) {
    return rule.request == place.request && (rule.key.empty() || rule.key == place.key);
}

}  // namespace

void Faults::Add(const std::string& text) {
    Fault fault;
    std::string name = text;
    const std::string argument = CutAt(name, '=');
    if (name.find('/') != std::string::npos) {
        const std::string behind = CutAt(name, '/');
        fault.udid = name;
        name = behind;
    }
    const auto* const row =
        std::find_if(kRows.begin(), kRows.end(), [&](const FaultRow& each) { return each.name == name; });
    if (row == kRows.end()) throw FaultError(fmt::format("'{}': there is no fault '{}'", text, name));
    fault.kind = row->kind;
    TakeArgument(fault, row->argument, argument, text);
    m_faults.push_back(fault);
}

bool Faults::Has(const std::string& udid, FaultKind kind) const {
    return HasAt(udid, kind, "");
}

bool Faults::HasAt(const std::string& udid, FaultKind kind, const std::string& key) const {
    return std::any_of(m_faults.begin(), m_faults.end(), [&](const Fault& fault) {
        return fault.kind == kind && fault.key == key && IsFor(fault, udid);
    });
}

std::optional<Fault> Faults::OnAnswer(const std::string& udid, const Place& place) const {
    for (const Fault& fault : m_faults) {
        if (!fault.place.request.empty() && Covers(fault.place, place) && IsFor(fault, udid)) return fault;
    }
    return std::nullopt;
}

std::optional<int> Faults::AnswersBeforeDrop(const std::string& udid) const {
    for (const Fault& fault : m_faults) {
        if (fault.kind == FaultKind::kDropAfter && IsFor(fault, udid)) return fault.count;
    }
    return std::nullopt;
}

std::string Faults::Help() {
    std::string help = "Faults, for all devices or with UDID/ in front for one:";
    for (const FaultRow& row : kRows) {
        help += fmt::format("\n  {:<26} {}", std::string(row.name) + ArgumentHelp(row.argument), row.help);
    }
    return help;
}

}  // namespace devicesim
