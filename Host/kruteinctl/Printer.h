#pragma once

#include <cstdio>
#include <nlohmann/json.hpp>
#include <string>

#include "Host/kruteinctl/JsonLine.h"
#include "Host/kruteinctl/Options.h"
#include "Host/kruteinctl/Streams.h"

/// What the commands print that look into backups: lines for people, or an object a line for programs, as
/// Docs/scripting.md tells. Output is buffered.
class Printer {
 public:
    using Json = nlohmann::ordered_json;

    Printer(Output output, const Streams& streams)
        : m_output(output), m_out(streams.Out()), m_style(streams.OutStyle()) {}

    /// How lines for people may look.
    const Style& LineStyle() const { return m_style; }

    /// One thing that the command has to say.
    /// \param text    called for people: a line, or several with line ends between them, in printable text.
    /// \param object  called for programs: an object with its message_type.
    /// \throws Failure when it cannot be written.
    template <typename Text, typename Object>
    void Print(const Text& text, const Object& object) {
        if (m_output == Output::kPeople) Put(text() + "\n");
        if (m_output == Output::kJson) Put(JsonLine(object()));
    }

    /// A line for people that programs have no use for.
    void PrintText(const std::string& text) {
        if (m_output == Output::kPeople) Put(text + "\n");
    }

    /// True once nobody reads any more: what is printed from then on is dropped.
    bool IsClosed() const { return m_closed; }

    /// Writes what is still in the buffer. \throws Failure when it cannot be written.
    void Flush();

    static Json Message(const char* type) { return {{"message_type", type}}; }

 private:
    void Put(const std::string& line);
    void Failed();

    Output m_output;
    FILE* m_out;
    Style m_style;
    bool m_closed = false;
};
