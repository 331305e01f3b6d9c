#include "CDM/src/engine/results/store/CompoundFile.h"

#include <cstdint>
#include <cstring>
#include <optional>
#include <vector>
#include <windows.h>

namespace
{
constexpr BYTE kSignature[] = {0xD0, 0xCF, 0x11, 0xE0, 0xA1, 0xB1, 0x1A, 0xE1};
constexpr uint32_t kEndOfChain = 0xFFFFFFFE;
constexpr uint32_t kNone = 0xFFFFFFFF;

// Where things stand in the header.
constexpr size_t kSectorShift = 0x1E;
constexpr size_t kMiniShift = 0x20;
constexpr size_t kTableSectors = 0x2C;
constexpr size_t kFirstDirectorySector = 0x30;
constexpr size_t kMiniCutoff = 0x38;
constexpr size_t kFirstMiniTableSector = 0x3C;
constexpr size_t kFirstListSector = 0x44;
constexpr size_t kList = 0x4C;
constexpr size_t kListEntries = 109;

// Where things stand in a directory entry.
constexpr size_t kEntrySize = 128;
constexpr size_t kType = 0x42;
constexpr size_t kLeft = 0x44;
constexpr size_t kRight = 0x48;
constexpr size_t kChild = 0x4C;
constexpr size_t kStart = 0x74;
constexpr size_t kSize = 0x78;
constexpr BYTE kStorage = 1;
constexpr BYTE kStream = 2;
constexpr BYTE kRoot = 5;

using Chain = std::vector<uint32_t>;

// A table of successors, in which every place belongs to one chain at most.
class CChains
{
  public:
    explicit CChains(std::vector<uint32_t> next) : m_next(std::move(next)), m_taken(m_next.size()) {}

    bool Take(uint32_t place)
    {
        if (place >= m_next.size() || m_taken[place])
            return false;
        m_taken[place] = true;
        return true;
    }
    std::optional<Chain> TakeChain(uint32_t start)
    {
        Chain chain;
        for (uint32_t place = start; place != kEndOfChain && place != kNone; place = m_next[place])
        {
            if (!Take(place))
                return std::nullopt;
            chain.push_back(place);
        }
        return chain;
    }

  private:
    std::vector<uint32_t> m_next;
    std::vector<bool> m_taken;
};

class CCompoundFile
{
  public:
    explicit CCompoundFile(std::string_view bytes) : m_bytes(bytes) {}

    bool IsSound()
    {
        if (!ReadHeader())
            return false;
        std::vector<uint32_t> next;
        Chain tableSectors;
        if (!ReadSectorTable(next, tableSectors))
            return false;
        CChains sectors(std::move(next));
        for (const uint32_t sector : tableSectors)
            if (!sectors.Take(sector))
                return false;

        const std::optional<Chain> directory = sectors.TakeChain(Number(kFirstDirectorySector));
        const std::optional<Chain> miniTable = sectors.TakeChain(Number(kFirstMiniTableSector));
        if (!directory || directory->empty() || !miniTable || !InFile(*directory) || !InFile(*miniTable))
            return false;
        m_directory = *directory;
        CChains miniSectors(Numbers(*miniTable));
        return IsDirectorySound(sectors, miniSectors);
    }

  private:
    uint32_t Number(uint64_t offset) const
    {
        uint32_t number = 0;
        std::memcpy(&number, m_bytes.data() + offset, sizeof(number));
        return number;
    }
    BYTE Type(uint64_t entry) const { return static_cast<BYTE>(m_bytes[entry + kType]); }
    uint64_t Offset(uint32_t sector) const { return (static_cast<uint64_t>(sector) + 1) << m_shift; }
    size_t SectorSize() const { return size_t{1} << m_shift; }
    bool InFile(uint32_t sector) const { return Offset(sector) + SectorSize() <= m_bytes.size(); }
    bool InFile(const Chain& chain) const
    {
        for (const uint32_t sector : chain)
            if (!InFile(sector))
                return false;
        return true;
    }

    bool ReadHeader()
    {
        if (m_bytes.size() < 512 || std::memcmp(m_bytes.data(), kSignature, sizeof(kSignature)) != 0)
            return false;
        m_shift = Number(kSectorShift) & 0xFFFF;
        m_miniShift = Number(kMiniShift) & 0xFFFF;
        return (m_shift == 9 || m_shift == 12) && m_miniShift == 6;
    }

    // All numbers of the sectors of a chain, one after the other.
    std::vector<uint32_t> Numbers(const Chain& chain) const
    {
        std::vector<uint32_t> numbers;
        for (const uint32_t sector : chain)
            for (size_t i = 0; i < SectorSize(); i += sizeof(uint32_t))
                numbers.push_back(Number(Offset(sector) + i));
        return numbers;
    }

    // The table of sectors stands in sectors itself; those are listed in the header and in a chain of further
    // lists. `used` gets all of them.
    bool ReadSectorTable(std::vector<uint32_t>& next, Chain& used) const
    {
        Chain table;
        for (size_t i = 0; i < kListEntries; ++i)
            if (const uint32_t sector = Number(kList + i * sizeof(uint32_t)); sector != kNone)
                table.push_back(sector);
        const uint64_t most = m_bytes.size() >> m_shift;
        for (uint32_t list = Number(kFirstListSector); list != kEndOfChain && list != kNone;)
        {
            used.push_back(list);
            if (!InFile(list) || used.size() > most)
                return false;
            const std::vector<uint32_t> numbers = Numbers({list});
            for (size_t i = 0; i + 1 < numbers.size(); ++i)
                if (numbers[i] != kNone)
                    table.push_back(numbers[i]);
            list = numbers.back();
        }
        // The system trusts the count in the header, and can then neither read nor extend the file.
        if (table.size() != Number(kTableSectors) || table.size() > most || !InFile(table))
            return false;
        next = Numbers(table);
        used.insert(used.end(), table.begin(), table.end());
        return true;
    }

    uint64_t Entry(uint32_t index) const
    {
        const uint32_t inSector = static_cast<uint32_t>(SectorSize() / kEntrySize);
        return Offset(m_directory[index / inSector]) + index % inSector * kEntrySize;
    }

    bool IsDirectorySound(CChains& sectors, CChains& miniSectors) const
    {
        const size_t entries = m_directory.size() * (SectorSize() / kEntrySize);
        std::vector<bool> seen(entries);
        const uint64_t root = Entry(0);
        const std::optional<Chain> miniStream = sectors.TakeChain(Number(root + kStart));
        if (Type(root) != kRoot || !miniStream)
            return false;
        seen[0] = true;
        std::vector<uint32_t> open{Number(root + kChild)};
        while (!open.empty())
        {
            const uint32_t index = open.back();
            open.pop_back();
            if (index == kNone)
                continue;
            if (index >= entries || seen[index])
                return false;
            seen[index] = true;
            const uint64_t entry = Entry(index);
            const BYTE type = Type(entry);
            if (type == kStream ? !IsStreamSound(entry, sectors, miniSectors, *miniStream) : type != kStorage)
                return false;
            open.push_back(Number(entry + kLeft));
            open.push_back(Number(entry + kRight));
            if (type == kStorage)
                open.push_back(Number(entry + kChild));
        }
        return true;
    }

    bool IsStreamSound(uint64_t entry, CChains& sectors, CChains& miniSectors, const Chain& miniStream) const
    {
        const uint32_t size = Number(entry + kSize);
        if (size == 0)
            return true;
        const bool mini = size < Number(kMiniCutoff);
        const std::optional<Chain> chain = (mini ? miniSectors : sectors).TakeChain(Number(entry + kStart));
        const size_t shift = mini ? m_miniShift : m_shift;
        if (!chain || static_cast<uint64_t>(chain->size()) << shift < size)
            return false;
        for (const uint32_t place : *chain)
            if (mini ? place >> (m_shift - m_miniShift) >= miniStream.size()
                     : Offset(place) >= m_bytes.size())
                return false;
        return true;
    }

    const std::string_view m_bytes;
    size_t m_shift = 0;
    size_t m_miniShift = 0;
    Chain m_directory;
};
} // namespace

bool IsSoundCompoundFile(std::string_view bytes)
{
    return CCompoundFile(bytes).IsSound();
}
