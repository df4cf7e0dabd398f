// SPDX-License-Identifier: MIT
// Both kinds are trees in which a place is an object with a file and a line, wherever it stands.
// Programs print JSON that is neither, and JSON of unexpected shapes: the library's exceptions
// about them mean that a document is passed on as it is.
#include "remap/JsonRemapper.h"
#include "Files.h"
#include "map/ChainText.h"
#include <limits>
#include <nlohmann/json.hpp>

namespace telv::tool
{

namespace
{

using Json = nlohmann::ordered_json;

/// No messages nest deeper; what does is passed on as it is.
constexpr int s_deepest = 1000;

/// One that is too large is the largest there is.
std::optional<ssize_t> NumberIn(const Json& object, const char* name)
{
    constexpr ssize_t largest = std::numeric_limits<ssize_t>::max();
    const auto found = object.find(name);
    if (found == object.end() || !found->is_number_integer())
        return std::nullopt;
    if (found->is_number_unsigned() && found->get<size_t>() > static_cast<size_t>(largest))
        return largest;
    return found->get<ssize_t>();
}

std::string TextIn(const Json& object, const char* name)
{
    const auto found = object.find(name);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

/// GCC: {"file":F,"line":L,"column":C,"byte-column":B,"display-column":D}. C is B or D, as GCC was
/// told; before there were B and D it was B.
class GccRemapper
{
public:
    explicit GccRemapper(MappedOutputs& outputs) : m_outputs(outputs) {}

    /// Whether a place was mapped.
    bool IsChanged() const { return m_isChanged; }

    void Remap(Json& value)
    {
        if (value.is_object())
            RemapObject(value);
        if (value.is_structured())
            for (Json& part : value)
                Remap(part);
    }

private:
    void RemapObject(Json& object);
    std::optional<MessageOrigin> OriginOf(const Json& place);
    void RemapPlace(Json& place);
    bool CanFix(const Json& fixes);
    static EColumnUnit UnitOfColumn(const Json& place);
    void AddNotes(Json& message, const MessageOrigin& origin, EColumnUnit unit);

    MappedOutputs& m_outputs;
    bool m_isChanged = false;
};

void GccRemapper::RemapObject(Json& object)
{
    if (object.contains("locations") && object.contains("message"))
    {
        const Json& locations = object["locations"];
        if (!locations.empty() && locations[0].contains("caret"))
            if (const auto origin = OriginOf(locations[0]["caret"]))
                AddNotes(object, *origin, UnitOfColumn(locations[0]["caret"]));
    }
    if (object.contains("fixits") && !CanFix(object["fixits"]))
    {
        object.erase("fixits");
        m_isChanged = true;
    }
    if (object.contains("file") && object.contains("line"))
        RemapPlace(object);
}

std::optional<MessageOrigin> GccRemapper::OriginOf(const Json& place)
{
    const std::optional<size_t> output = m_outputs.Find(TextIn(place, "file"));
    const std::optional<ssize_t> line = NumberIn(place, "line");
    if (!output || !line)
        return std::nullopt;
    if (const auto byte = NumberIn(place, "byte-column"))
        return m_outputs.Map(*output, *line, byte, EColumnUnit::Bytes);
    return m_outputs.Map(*output, *line, NumberIn(place, "column"), UnitOfColumn(place));
}

/// What "column" counts; GCC's default if that can't be told.
EColumnUnit GccRemapper::UnitOfColumn(const Json& place)
{
    const auto shown = NumberIn(place, "display-column");
    const bool isShown = shown && shown == NumberIn(place, "column");
    return isShown ? EColumnUnit::Terminal : EColumnUnit::Bytes;
}

void GccRemapper::RemapPlace(Json& place)
{
    const auto origin = OriginOf(place);
    if (!origin || !origin->IsInFile())
        return;
    m_isChanged = true;
    place["file"] = origin->m_place.m_path;
    place["line"] = origin->m_place.m_line;
    const EColumnUnit unit = UnitOfColumn(place);
    for (const auto& [name, counted] : {std::pair("column", unit),
                                        {"byte-column", EColumnUnit::Bytes},
                                        {"display-column", EColumnUnit::Terminal}})
        if (place.contains(name))
            place[name] = m_outputs.ColumnIn(origin->m_place, counted);
}

/// A fix of calculated text would spoil the directive, and one of which only an end has a source
/// would change something else. Fixes of no known source stay as they are.
bool GccRemapper::CanFix(const Json& fixes)
{
    bool areCopied = true;
    bool areMapped = false;
    for (const Json& fix : fixes)
        for (const char* end : {"start", "next"})
            if (fix.contains(end) && m_outputs.Find(TextIn(fix[end], "file")))
            {
                const auto origin = OriginOf(fix[end]);
                const bool isMapped = origin && origin->IsInFile();
                areMapped = areMapped || isMapped;
                areCopied = areCopied && isMapped && origin->m_isCopied;
            }
    return areCopied || !areMapped;
}

void GccRemapper::AddNotes(Json& message, const MessageOrigin& origin, EColumnUnit unit)
{
    for (const MessageNote& note : origin.m_notes)
    {
        const Json caret = {{"file", note.m_place.m_path},
                            {"line", note.m_place.m_line},
                            {"column", m_outputs.ColumnIn(note.m_place, unit)}};
        Json child = {{"kind", "note"}, {"message", note.m_text}, {"locations", Json::array()}};
        if (!note.m_place.m_path.empty())
            child["locations"].push_back({{"caret", caret}});
        message["children"].push_back(child);
        m_isChanged = true;
    }
    if (origin.m_moreNotes > 0)
        message["children"].push_back({{"kind", "note"},
                                       {"message", DescribeMoreSteps(origin.m_moreNotes)},
                                       {"locations", Json::array()}});
}

int HexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

constexpr const char* s_fileScheme = "file://";

/// The path of a URI: a relative one, or one of a file.
std::string PathOfUri(const std::string& uri)
{
    std::string path;
    const std::string escaped = uri.starts_with(s_fileScheme) ? uri.substr(7) : uri;
    for (size_t i = 0; i < escaped.size(); ++i)
    {
        const bool isEscape = escaped[i] == '%' && i + 2 < escaped.size() &&
                              HexDigit(escaped[i + 1]) >= 0 && HexDigit(escaped[i + 2]) >= 0;
        path += isEscape
                    ? static_cast<char>(HexDigit(escaped[i + 1]) * 16 + HexDigit(escaped[i + 2]))
                    : escaped[i];
        i += isEscape ? 2 : 0;
    }
    return path;
}

std::string UriOfPath(const std::string& path)
{
    static const char s_digits[] = "0123456789ABCDEF";
    static const std::string s_plain = "-._~/!$&'()*+,;=@";
    std::string uri;
    for (const char c : path)
    {
        const auto byte = static_cast<unsigned char>(c);
        const bool isPlain = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') ||
                             (c >= 'A' && c <= 'Z') || s_plain.find(c) != std::string::npos;
        if (isPlain)
            uri += c;
        else
            uri += std::string("%") + s_digits[byte >> 4] + s_digits[byte & 15];
    }
    return uri;
}

/// SARIF: {"artifactLocation":{"uri":U,"index":I},"region":{...}}, in each run.
class SarifRemapper
{
public:
    explicit SarifRemapper(MappedOutputs& outputs) : m_outputs(outputs) {}

    /// Whether a place was mapped.
    bool IsChanged() const { return m_isChanged; }

    void Remap(Json& document)
    {
        for (Json& run : document["runs"])
        {
            m_run = &run;
            m_unit = TextIn(run, "columnKind") == "utf16CodeUnits" ? EColumnUnit::Utf16
                                                                   : EColumnUnit::CodePoints;
            if (run.contains("results"))
                RemapPart(run["results"]);
        }
    }

private:
    void RemapPart(Json& value);
    void RemapResult(Json& result);
    void EraseFixes(Json& result);
    bool IsMapped(const Json& fix);
    std::optional<MessageOrigin> OriginOf(const Json& location);
    std::string UriOf(const Json& artifact) const;
    bool IsAbsolute(const Json& location) const;
    void RemapLocation(Json& location);
    void Place(Json& location, const MessagePlace& place, bool isAbsolute);

    MappedOutputs& m_outputs;
    Json* m_run = nullptr;
    EColumnUnit m_unit = EColumnUnit::CodePoints;
    bool m_isChanged = false;
};

void SarifRemapper::RemapPart(Json& value)
{
    if (value.is_object())
    {
        if (value.contains("ruleId") || value.contains("message"))
            RemapResult(value);
        if (value.contains("fixes"))
            EraseFixes(value);
        if (value.contains("artifactLocation"))
            RemapLocation(value);
    }
    if (value.is_structured())
        for (Json& part : value)
            RemapPart(part);
}

/// Adds the chain to a result as related locations.
void SarifRemapper::RemapResult(Json& result)
{
    if (!result.contains("locations") || result["locations"].empty())
        return;
    const Json& first = result["locations"][0];
    if (!first.contains("physicalLocation"))
        return;
    const auto origin = OriginOf(first["physicalLocation"]);
    if (!origin)
        return;
    const bool isAbsolute = IsAbsolute(first["physicalLocation"]);
    for (const MessageNote& note : origin->m_notes)
    {
        Json related = {{"message", {{"text", note.m_text}}}};
        if (!note.m_place.m_path.empty())
        {
            related["physicalLocation"] = {{"artifactLocation", Json::object()},
                                           {"region", Json::object()}};
            Place(related["physicalLocation"], note.m_place, isAbsolute);
        }
        result["relatedLocations"].push_back(related);
        m_isChanged = true;
    }
    if (origin->m_moreNotes > 0)
        result["relatedLocations"].push_back(
            {{"message", {{"text", DescribeMoreSteps(origin->m_moreNotes)}}}});
}

/// Takes away the fixes that change mapped files: what they insert is text of the output, and the
/// ends of what they delete can come from two places. Those of other files can be applied.
void SarifRemapper::EraseFixes(Json& result)
{
    Json others = Json::array();
    const Json& fixes = result["fixes"];
    for (const Json& fix : fixes)
        if (!IsMapped(fix))
            others.push_back(fix);
    if (others.size() == fixes.size())
        return;
    m_isChanged = true;
    if (others.empty())
        result.erase("fixes");
    else
        result["fixes"] = std::move(others);
}

bool SarifRemapper::IsMapped(const Json& fix)
{
    if (!fix.contains("artifactChanges"))
        return false;
    for (const Json& change : fix["artifactChanges"])
    {
        if (!change.contains("artifactLocation") || !change.contains("replacements"))
            continue;
        for (const Json& replacement : change["replacements"])
            if (replacement.contains("deletedRegion") &&
                OriginOf({{"artifactLocation", change["artifactLocation"]},
                          {"region", replacement["deletedRegion"]}}))
                return true;
    }
    return false;
}

/// The name itself, or that of the artifact that an index means.
std::string SarifRemapper::UriOf(const Json& artifact) const
{
    std::string uri = TextIn(artifact, "uri");
    const auto index = NumberIn(artifact, "index");
    if (!uri.empty() || !index || !m_run->contains("artifacts"))
        return uri;
    const Json& artifacts = (*m_run)["artifacts"];
    const auto number = static_cast<size_t>(*index);
    if (*index < 0 || number >= artifacts.size() || !artifacts[number].contains("location"))
        return uri;
    return TextIn(artifacts[number]["location"], "uri");
}

std::optional<MessageOrigin> SarifRemapper::OriginOf(const Json& location)
{
    if (!location.contains("artifactLocation") || !location.contains("region"))
        return std::nullopt;
    const auto output = m_outputs.Find(PathOfUri(UriOf(location["artifactLocation"])));
    const auto line = NumberIn(location["region"], "startLine");
    if (!output || !line)
        return std::nullopt;
    return m_outputs.Map(*output, *line, NumberIn(location["region"], "startColumn"), m_unit);
}

void SarifRemapper::RemapLocation(Json& location)
{
    const auto origin = OriginOf(location);
    if (!origin || !origin->IsInFile())
        return;
    const bool isAbsolute = IsAbsolute(location);
    m_isChanged = true;
    location.erase("contextRegion");
    Place(location, origin->m_place, isAbsolute);
}

/// Whether a location names its file whole: what it is replaced by, and what is said about it,
/// does so too then.
bool SarifRemapper::IsAbsolute(const Json& location) const
{
    return UriOf(location["artifactLocation"]).starts_with(s_fileScheme);
}

/// The end of a region can come from elsewhere than its beginning, so only this is kept.
void SarifRemapper::Place(Json& location, const MessagePlace& place, bool isAbsolute)
{
    std::string uri = UriOfPath(isAbsolute ? ResolvedPath(place.m_path) : place.m_path);
    if (isAbsolute)
        uri.insert(0, s_fileScheme);
    location["artifactLocation"] = {{"uri", uri}};
    const bool hasColumn = location["region"].contains("startColumn") || location["region"].empty();
    location["region"] = {{"startLine", place.m_line}};
    if (hasColumn)
        location["region"]["startColumn"] = m_outputs.ColumnIn(place, m_unit);
}

bool HasGccMessages(const Json& document)
{
    return document.is_array() && !document.empty() && document[0].is_object() &&
           document[0].contains("kind") && document[0].contains("locations");
}

/// Remaps `document` if it is of a known kind. Whether something was mapped.
bool RemapDocument(Json& document, MappedOutputs& outputs)
{
    if (document.is_object() && document.contains("runs") && document["runs"].is_array())
    {
        SarifRemapper remapper(outputs);
        remapper.Remap(document);
        return remapper.IsChanged();
    }
    if (!HasGccMessages(document))
        return false;
    GccRemapper remapper(outputs);
    remapper.Remap(document);
    return remapper.IsChanged();
}

} // namespace

EJson RecogniseJson(const std::string& text)
{
    const size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string::npos || (text[first] != '{' && text[first] != '['))
        return EJson::None;
    const size_t second = text.find_first_not_of(" \t\r\n", first + 1);
    const bool isList = text[first] == '[';
    if (second == std::string::npos)
        return EJson::Beginning;
    if (text[second] != (isList ? '{' : '"') && text[second] != (isList ? ']' : '}'))
        return EJson::None;
    try
    {
        bool isDeep = false;
        const auto watch = [&](int depth, Json::parse_event_t, const Json&)
        {
            isDeep = isDeep || depth > s_deepest;
            return true;
        };
        const Json document = Json::parse(text, watch);
        return document.is_structured() && !isDeep ? EJson::Whole : EJson::None;
    }
    catch (const Json::parse_error& e)
    {
        return e.byte > text.size() ? EJson::Beginning : EJson::None;
    }
    catch (const Json::exception&)
    {
        return EJson::None; // A number that is none of this machine.
    }
}

std::string RemapJson(const std::string& text, MappedOutputs& outputs)
try
{
    Json document = Json::parse(text);
    if (!RemapDocument(document, outputs))
        return text;
    const size_t end = text.find_last_not_of(" \t\r\n") + 1;
    const bool isIndented = text.find('\n') < end;
    return document.dump(isIndented ? 2 : -1, ' ', false, Json::error_handler_t::replace) +
           text.substr(end);
}
catch (const Json::exception&)
{
    return text;
}

} // namespace telv::tool
