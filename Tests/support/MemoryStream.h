#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

/// A stream that is written into memory: MemoryStream out; dump(out.Stream()); out.Text().
class MemoryStream {
 public:
    MemoryStream() : m_stream(open_memstream(&m_text, &m_size)) {}
    ~MemoryStream() {
        std::fclose(m_stream);
        std::free(m_text);
    }
    MemoryStream(const MemoryStream&) = delete;
    MemoryStream& operator=(const MemoryStream&) = delete;

    FILE* Stream() const { return m_stream; }

    std::string Text() const {
        std::fflush(m_stream);
        return {m_text, m_size};
    }

 private:
    char* m_text = nullptr;
    std::size_t m_size = 0;
    FILE* m_stream;
};
