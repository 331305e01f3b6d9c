// The streams of a result store, and the least that writes and reads them: the storage calls alone.
#pragma once

#include <string>
#include <vector>

class CStreamCopy
{
  public:
    // Takes the streams of these results out of a store, in the order in which the store has written them.
    void Take(const std::wstring& file, const std::vector<std::wstring>& resultIds);

    // Replaces those of the first results in a file that has them.
    void Write(const std::wstring& file, size_t results) const;
    // Reads those of all results.
    void Read(const std::wstring& file) const;

  private:
    struct CStream
    {
        std::wstring Name;
        std::string Bytes;
    };
    struct CResult
    {
        std::wstring Id;
        std::vector<CStream> Streams;
    };

    std::vector<CResult> m_results;
};
