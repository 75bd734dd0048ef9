#pragma once

#include <cstdio>
#include <functional>
#include <string>
#include <thread>

#include "Host/kruteinctl/Style.h"

/// The program's outputs. The library and the backup tool print to standard output too, which must not mix
/// with what kruteinctl says (and programs parse): their standard output is dropped for good, the tool's
/// standard error is collected line by line while a run lasts.
class Streams {
 public:
    /// Takes the standard descriptors over. Make one, before anything is printed.
    Streams();
    ~Streams();
    Streams(const Streams&) = delete;
    Streams& operator=(const Streams&) = delete;

    FILE* Out() const { return m_out; }
    FILE* Errors() const { return m_errors; }
    /// Whether lines can be drawn over on standard output.
    bool OutIsDrawable() const { return m_outIsTerminal && TerminalHasControls(); }
    Style OutStyle() const;
    Style ErrorStyle() const;

    /// Columns of the terminal, 80 where it does not tell.
    std::size_t TerminalColumns() const;

 private:
    FILE* m_out;
    FILE* m_errors;
    bool m_outIsTerminal;
    bool m_errorsAreTerminal;
};

/// While it lives, each line that goes to descriptor 2, by whatever process, is handed to a function instead.
class CollectedErrors {
 public:
    /// \param onLine  called on a thread of this object, with printable text without line end.
    explicit CollectedErrors(std::function<void(const std::string&)> onLine);
    /// Hands on what has come and gives the descriptor back. Does not wait for processes that still hold it.
    ~CollectedErrors();
    CollectedErrors(const CollectedErrors&) = delete;
    CollectedErrors& operator=(const CollectedErrors&) = delete;

 private:
    void Collect();
    void TakeBytes();
    void TakeLine(const std::string& line);

    std::function<void(const std::string&)> m_onLine;
    int m_before = -1;  ///< what descriptor 2 was
    int m_lines = -1;   ///< read end of what it is now
    int m_stop[2] = {-1, -1};
    std::string m_rest;  ///< of a line that has not ended
    std::thread m_collector;
};
