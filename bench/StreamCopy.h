// The streams of a result store, and the least that writes and reads them: the storage calls alone. Either on
// the file itself, or as the provider does it, in memory: the file is read and replaced as a whole.
#pragma once

#include <objidl.h>
#include <string>
#include <vector>

class CStreamCopy
{
  public:
    // Takes the streams of these results out of a store, in the order in which the store has written them.
    void Take(const std::wstring& file, const std::vector<std::wstring>& resultIds);

    enum class Where
    {
        File,
        Memory
    };
    // Replaces those of the first results in a file that has them.
    void Write(const std::wstring& file, Where where, size_t results) const;
    // Reads those of all results.
    void Read(const std::wstring& file, Where where) const;

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

    void Replace(IStorage& root, size_t results) const;

    std::vector<CResult> m_results;
};
