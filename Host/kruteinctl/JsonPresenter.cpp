#include "Host/kruteinctl/JsonPresenter.h"

#include <fmt/format.h>

#include <cmath>

#include "Host/kruteinctl/JsonLine.h"

namespace {

using Json = nlohmann::ordered_json;

Json Message(const char* type) {
    return {{"message_type", type}};
}

}  // namespace

void JsonPresenter::DoShow(const ProgressState& state) {
    Json object = Message("status");
    object["phase"] = state.phase;
    if (state.fraction) {
        object["percent_done"] = std::floor(*state.fraction * 10000) / 10000;
        object["files_done"] = state.done;
        object["total_files"] = state.total;
        if (!state.current.empty()) object["current_file"] = state.current;
    }
    object["seconds_elapsed"] = state.elapsed.count();
    if (state.remaining) object["seconds_remaining"] = state.remaining->count();
    std::string line = JsonLine(object);
    if (line == m_last) return;
    fmt::print(m_streams.Out(), "{}", line);
    std::fflush(m_streams.Out());
    m_last = std::move(line);
}

void JsonPresenter::DoNote(const std::string& text) {
    Json object = Message("status");
    object["note"] = text;
    fmt::print(m_streams.Out(), "{}", JsonLine(object));
}

void JsonPresenter::DoDone(const Summary& summary) {
    Json object = Message("summary");
    object["command"] = NameOf(summary.command);
    object["udid"] = summary.udid;
    object["path"] = summary.path;
    if (!summary.types.empty()) object["types"] = summary.types;
    if (summary.files) object["files"] = *summary.files;
    if (summary.bytes) object["bytes"] = *summary.bytes;
    object["seconds"] = summary.elapsed.count();
    fmt::print(m_streams.Out(), "{}", JsonLine(object));
    std::fflush(m_streams.Out());
}

void JsonPresenter::DoFailed(std::optional<CommandName> command, const Failure& failure) {
    Json object = Message("error");
    if (command) object["command"] = NameOf(*command);
    object["exit_code"] = static_cast<int>(failure.Code());
    object["cause"] = CauseOf(failure.Code());
    if (failure.RunCode()) object["tool_code"] = *failure.RunCode();
    object["message"] = failure.what();
    fmt::print(m_streams.Out(), "{}", JsonLine(object));
    std::fflush(m_streams.Out());
}
