// SPDX-License-Identifier: MIT
// The pieces of a large map are many; each is taken out of the document as soon as it has been
// read.
#include "map/ReadMap.h"
#include <limits>
#include <nlohmann/json.hpp>

namespace telv::tool
{

namespace
{

using nlohmann::json;

/// No text is so long; sums of such numbers still fit.
constexpr int64_t s_most = int64_t{1} << 60;

class MapReader
{
public:
    explicit MapReader(const std::string& name) : m_name(name) {}

    OutputMap Read(SubString text);

private:
    [[noreturn]] void Fail(const std::string& what) const
    {
        throw MapError("'" + m_name + "' is no map that can be used: " + what);
    }
    bool TakePart(int depth, json::parse_event_t event, json& value);
    void CheckVersion(const json& version) const;
    void ReadHead(const json& document);
    void ReadPiece(const json& value);
    void ReadChain(const json& value);
    void CheckReferences() const;
    void CheckRange(const SourceRange& range) const;
    SourceRange ReadRange(const json& value) const;
    EPieceKind ReadKind(const json& value) const;
    ssize_t ReadNumber(const json& value, const char* name) const;
    ssize_t ReadOptional(const json& value, const char* name) const;
    uint32_t ReadSum(const json& document) const;
    std::string ReadString(const json& value, const char* name) const;

    const std::string& m_name;
    OutputMap m_map;
    std::string m_member; ///< Of the document, that is being read.
};

ssize_t MapReader::ReadNumber(const json& value, const char* name) const
{
    const auto found = value.find(name);
    if (found == value.end() || !found->is_number_integer() || found->get<int64_t>() < 0)
        Fail(std::string("\"") + name + "\" is missing or no number");
    if (found->get<int64_t>() > s_most)
        Fail(std::string("\"") + name + "\" is larger than any text");
    return found->get<ssize_t>();
}

/// `s_none` where it is null or missing.
ssize_t MapReader::ReadOptional(const json& value, const char* name) const
{
    const auto found = value.find(name);
    return found == value.end() || found->is_null() ? s_none : ReadNumber(value, name);
}

uint32_t MapReader::ReadSum(const json& document) const
{
    const ssize_t sum = ReadNumber(document, "crc32");
    if (sum > std::numeric_limits<uint32_t>::max())
        Fail("\"crc32\" has more than 32 bits");
    return static_cast<uint32_t>(sum);
}

std::string MapReader::ReadString(const json& value, const char* name) const
{
    const auto found = value.find(name);
    if (found == value.end() || !found->is_string())
        Fail(std::string("\"") + name + "\" is missing or no text");
    return found->get<std::string>();
}

SourceRange MapReader::ReadRange(const json& value) const
{
    const SourceRange range{ReadOptional(value, "source"), ReadOptional(value, "in"),
                            ReadNumber(value, "inSize")};
    if (range.IsKnown() != (range.m_in != s_none))
        Fail("\"source\" and \"in\" don't go together");
    return range;
}

EPieceKind MapReader::ReadKind(const json& value) const
{
    const std::string kind = ReadString(value, "kind");
    for (const EPieceKind known :
         {EPieceKind::Source, EPieceKind::Calculated, EPieceKind::Indentation})
        if (kind == NameOf(known))
            return known;
    Fail("a piece of the unknown kind \"" + kind + "\"");
}

void MapReader::ReadPiece(const json& value)
{
    MapPiece piece;
    piece.m_kind = ReadKind(value);
    piece.m_out = ReadNumber(value, "out");
    piece.m_size = ReadNumber(value, "size");
    piece.m_place = ReadRange(value);
    if (const auto from = value.find("from"); from != value.end() && from->is_object())
        piece.m_from = ReadRange(*from);
    if (const auto copied = value.find("copied"); copied != value.end() && copied->is_object())
        piece.m_copied = ReadRange(*copied);
    piece.m_chain = ReadOptional(value, "chain");
    const ssize_t end =
        m_map.m_pieces.empty() ? 0 : m_map.m_pieces.back().m_out + m_map.m_pieces.back().m_size;
    if (piece.m_out != end || piece.m_size == 0)
        Fail("the pieces leave a gap or overlap at " + std::to_string(end));
    if (piece.m_kind == EPieceKind::Source && piece.m_place.m_inSize != piece.m_size)
        Fail("the copied piece at " + std::to_string(end) + " has another size than its source");
    if (piece.m_copied.m_inSize != 0 && piece.m_copied.m_inSize != piece.m_size)
        Fail("the copied piece at " + std::to_string(end) + " has another size than its source");
    m_map.m_pieces.push_back(piece);
}

void MapReader::ReadChain(const json& value)
{
    MapChain chain;
    chain.m_kind = ReadString(value, "kind");
    chain.m_name = ReadString(value, "name");
    chain.m_place = ReadRange(value);
    chain.m_round = ReadOptional(value, "round");
    chain.m_parent = ReadOptional(value, "parent");
    if (chain.m_parent >= static_cast<ssize_t>(m_map.m_chains.size()))
        Fail("a chain has a parent that does not come before it");
    m_map.m_chains.push_back(std::move(chain));
}

/// Called by the parser for every part; with false, the part is left out of the document.
bool MapReader::TakePart(int depth, json::parse_event_t event, json& value)
{
    if (event == json::parse_event_t::key && depth == 1)
        m_member = value.get<std::string>();
    // The version comes first: it says how to read the rest.
    if (event == json::parse_event_t::value && depth == 1 && m_member == "version")
        CheckVersion(value);
    if (event != json::parse_event_t::object_end || depth != 2)
        return true;
    if (m_member == "pieces")
        ReadPiece(value);
    else if (m_member == "chains")
        ReadChain(value);
    return m_member != "pieces" && m_member != "chains";
}

void MapReader::CheckVersion(const json& version) const
{
    if (version != OutputMap::s_version)
        Fail("its version is " + version.dump() + ", this program reads version " +
             std::to_string(OutputMap::s_version));
}

void MapReader::ReadHead(const json& document)
{
    if (!document.is_object() || !document.contains("version"))
        Fail("it has no \"version\"");
    const auto sources = document.find("sources");
    if (sources == document.end() || !sources->is_array())
        Fail("\"sources\" is missing or no list");
    for (const json& source : *sources)
    {
        if (!source.is_string())
            Fail("a source that is no text");
        m_map.m_sources.push_back(source.get<std::string>());
    }
    m_map.m_size = ReadNumber(document, "size");
    if (document.contains("crc32"))
        m_map.m_crc32 = ReadSum(document);
    if (document.contains("output"))
        m_map.m_output = ReadString(document, "output");
    if (document.contains("directory"))
        m_map.m_directory = ReadString(document, "directory");
}

void MapReader::CheckRange(const SourceRange& range) const
{
    if (range.m_source >= static_cast<ssize_t>(m_map.m_sources.size()))
        Fail("a source that is not in the list");
}

void MapReader::CheckReferences() const
{
    const auto& pieces = m_map.m_pieces;
    const ssize_t end = pieces.empty() ? 0 : pieces.back().m_out + pieces.back().m_size;
    if (end != m_map.m_size)
        Fail("the pieces end at " + std::to_string(end) + ", the output at " +
             std::to_string(m_map.m_size));
    for (const MapPiece& piece : pieces)
    {
        CheckRange(piece.m_place);
        CheckRange(piece.m_from);
        CheckRange(piece.m_copied);
        if (piece.m_chain >= static_cast<ssize_t>(m_map.m_chains.size()))
            Fail("a chain that is not in the list");
    }
    for (const MapChain& chain : m_map.m_chains)
        CheckRange(chain.m_place);
}

OutputMap MapReader::Read(SubString text)
{
    json document;
    try
    {
        document = json::parse(text.begin(), text.end(),
                               [this](int depth, json::parse_event_t event, json& value)
                               { return TakePart(depth, event, value); });
    }
    catch (const json::exception&)
    {
        Fail("it is no JSON, or not all of it");
    }
    ReadHead(document);
    CheckReferences();
    return std::move(m_map);
}

} // namespace

OutputMap ReadMap(SubString json, const std::string& name)
{
    return MapReader(name).Read(json);
}

} // namespace telv::tool
