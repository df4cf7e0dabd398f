// SPDX-License-Identifier: MIT
// Both kinds are trees in which a place is an object with a file and a line, wherever it stands.
// Programs print JSON that is neither, and JSON of unexpected shapes: the library's exceptions
// about them mean that a document is passed on as it is.
#include "remap/JsonRemapper.h"
#include "Files.h"
#include "map/ChainText.h"
#include "remap/FileUri.h"
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
        if (value.is_object() && value.contains("start") && value.contains("next"))
            return RemapFix(value);
        if (value.is_object())
            RemapObject(value);
        if (value.is_structured())
            for (Json& part : value)
                Remap(part);
    }

private:
    void RemapObject(Json& object);
    std::optional<MessageOrigin> OriginOf(const Json& place);
    static std::optional<OutputPlace> PlaceIn(const Json& place);
    std::optional<CopiedRange> RangeOf(const Json& first, const Json& last, bool isLastInside);
    void RemapPlace(Json& place);
    void SetPlace(Json& place, const MessagePlace& to);
    void RemapFix(Json& fix);
    void CutRange(Json& location);
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
        Json& locations = object["locations"];
        if (!locations.empty() && locations[0].contains("caret"))
            if (const auto origin = OriginOf(locations[0]["caret"]))
                AddNotes(object, *origin, UnitOfColumn(locations[0]["caret"]));
        for (Json& location : locations)
            CutRange(location);
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

/// Nothing for a place without a column.
std::optional<OutputPlace> GccRemapper::PlaceIn(const Json& place)
{
    const auto line = NumberIn(place, "line");
    const auto byte = NumberIn(place, "byte-column");
    const auto column = byte ? byte : NumberIn(place, "column");
    if (!line || !column)
        return std::nullopt;
    return OutputPlace{*line, *column, byte ? EColumnUnit::Bytes : UnitOfColumn(place)};
}

/// Where the stretch between two places of one output was copied from, in one piece. GCC's ranges
/// end with the place of their last character, its fixes before one.
std::optional<CopiedRange> GccRemapper::RangeOf(const Json& first, const Json& last,
                                                bool isLastInside)
{
    const auto output = m_outputs.Find(TextIn(first, "file"));
    const auto from = PlaceIn(first);
    auto to = PlaceIn(last);
    if (!output || !from || !to || m_outputs.Find(TextIn(last, "file")) != output)
        return std::nullopt;
    if (isLastInside && to->m_column < std::numeric_limits<ssize_t>::max())
        ++to->m_column;
    return m_outputs.MapRange(*output, *from, *to);
}

/// Takes the ends from a location of an output that was not copied as it stands, from the first to
/// the last character: they come from elsewhere than the place itself.
void GccRemapper::CutRange(Json& location)
{
    if (!location.contains("caret") || !(location.contains("start") || location.contains("finish")))
        return;
    const Json& caret = location["caret"];
    if (const auto origin = OriginOf(caret); !origin || !origin->IsInFile())
        return;
    const Json& first = location.contains("start") ? location["start"] : caret;
    const Json& last = location.contains("finish") ? location["finish"] : caret;
    if (RangeOf(first, last, /*isLastInside=*/true) &&
        (first == caret || RangeOf(first, caret, /*isLastInside=*/true)) &&
        (last == caret || RangeOf(caret, last, /*isLastInside=*/true)))
        return;
    location.erase("start");
    location.erase("finish");
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
    SetPlace(place, origin->m_place);
}

void GccRemapper::SetPlace(Json& place, const MessagePlace& to)
{
    m_isChanged = true;
    place["file"] = to.m_path;
    place["line"] = to.m_line;
    const EColumnUnit unit = UnitOfColumn(place);
    for (const auto& [name, counted] : {std::pair("column", unit),
                                        {"byte-column", EColumnUnit::Bytes},
                                        {"display-column", EColumnUnit::Terminal}})
        if (place.contains(name))
            place[name] = m_outputs.ColumnIn(to, counted);
}

/// Of one that stays: see CanFix.
void GccRemapper::RemapFix(Json& fix)
{
    if (const auto range = RangeOf(fix["start"], fix["next"], /*isLastInside=*/false))
    {
        SetPlace(fix["start"], range->m_first);
        SetPlace(fix["next"], range->m_end);
        return;
    }
    RemapPlace(fix["start"]);
    RemapPlace(fix["next"]);
}

/// A fix of calculated text would spoil the directive, and one of text that comes from several
/// places would change something else. Fixes of no known source stay as they are.
bool GccRemapper::CanFix(const Json& fixes)
{
    bool areCopied = true;
    bool areMapped = false;
    for (const Json& fix : fixes)
    {
        const bool hasBoth = fix.contains("start") && fix.contains("next");
        const bool isOutput = hasBoth && m_outputs.Find(TextIn(fix["start"], "file"));
        // One that only inserts stands before what was copied.
        if (isOutput && fix["start"] != fix["next"])
            areCopied =
                areCopied && RangeOf(fix["start"], fix["next"], /*isLastInside=*/false).has_value();
        for (const std::string end : {"start", "next"})
            if (fix.contains(end) && m_outputs.Find(TextIn(fix[end], "file")))
            {
                const auto origin = OriginOf(fix[end]);
                const bool isMapped = origin && origin->IsInFile();
                areMapped = areMapped || isMapped;
                if (end == "start" || !hasBoth)
                    areCopied = areCopied && isMapped && origin->m_isCopied;
            }
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

/// SARIF: {"artifactLocation":{"uri":U,"uriBaseId":B,"index":I},"region":{...}}, in each run.
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
    /// How a location names its file: what it is replaced by, and what is said about it, does so
    /// too then.
    struct Naming
    {
        std::string m_path;        ///< What it names, from here or from the root.
        bool m_isAbsolute = false; ///< It is a URI with a scheme.
        std::string m_baseId;      ///< Of the directory that it is relative to; or empty.
        std::string m_base;        ///< That directory, with a slash; empty when it is not known.
    };

    void RemapPart(Json& value);
    void RemapResult(Json& result);
    void EraseFixes(Json& result);
    bool IsMapped(const Json& fix);
    std::optional<MessageOrigin> OriginOf(const Json& location);
    Json ArtifactOf(const Json& artifact) const;
    std::string BaseOf(const std::string& id) const;
    Naming NamingOf(const Json& location) const;
    static Json NameArtifact(const std::string& path, const Naming& naming);
    void RemapLocation(Json& location);
    void Place(Json& location, const MessagePlace& place, const Naming& naming) const;
    std::optional<MessagePlace> EndOf(const Json& location);
    void PlaceEnd(Json& region, const Json& before, const MessagePlace& begin,
                  const MessagePlace& end) const;

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
    const Naming naming = NamingOf(first["physicalLocation"]);
    for (const MessageNote& note : origin->m_notes)
    {
        Json related = {{"message", {{"text", note.m_text}}}};
        if (!note.m_place.m_path.empty())
        {
            related["physicalLocation"] = {{"artifactLocation", Json::object()},
                                           {"region", Json::object()}};
            Place(related["physicalLocation"], note.m_place, naming);
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

/// The location itself, or that of the artifact that its index means.
Json SarifRemapper::ArtifactOf(const Json& artifact) const
{
    const auto index = NumberIn(artifact, "index");
    if (!TextIn(artifact, "uri").empty() || !index || !m_run->contains("artifacts"))
        return artifact;
    const Json& artifacts = (*m_run)["artifacts"];
    const auto number = static_cast<size_t>(*index);
    if (*index < 0 || number >= artifacts.size() || !artifacts[number].contains("location"))
        return artifact;
    return artifacts[number]["location"];
}

/// The directory that the run gives this name, with a slash; empty when it gives none. Names can be
/// relative to others.
std::string SarifRemapper::BaseOf(const std::string& id) const
{
    constexpr int most = 8; // of names relative to others
    std::string path;
    std::string next = id;
    const auto bases = m_run->find("originalUriBaseIds");
    for (int i = 0; i < most && bases != m_run->end() && bases->contains(next); ++i)
    {
        const Json& base = (*bases)[next];
        const std::string uri = TextIn(base, "uri");
        path.insert(0, PathOfUri(uri));
        next = TextIn(base, "uriBaseId");
        if (uri.starts_with(s_fileScheme) || next.empty())
            return path.empty() || path.ends_with('/') ? path : path + "/";
    }
    return std::string();
}

std::optional<MessageOrigin> SarifRemapper::OriginOf(const Json& location)
{
    if (!location.contains("artifactLocation") || !location.contains("region"))
        return std::nullopt;
    const auto output = m_outputs.Find(NamingOf(location).m_path);
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
    const auto end = origin->m_isCopied ? EndOf(location) : std::nullopt;
    const Naming naming = NamingOf(location);
    const Json before = location["region"];
    m_isChanged = true;
    location.erase("contextRegion");
    Place(location, origin->m_place, naming);
    if (end)
        PlaceEnd(location["region"], before, origin->m_place, *end);
}

SarifRemapper::Naming SarifRemapper::NamingOf(const Json& location) const
{
    const Json artifact = ArtifactOf(location["artifactLocation"]);
    const std::string uri = TextIn(artifact, "uri");
    Naming naming;
    naming.m_path = PathOfUri(uri);
    naming.m_isAbsolute = uri.starts_with(s_fileScheme);
    if (naming.m_isAbsolute)
        return naming;
    naming.m_baseId = TextIn(artifact, "uriBaseId");
    naming.m_base = BaseOf(naming.m_baseId);
    naming.m_path.insert(0, naming.m_base);
    return naming;
}

/// A name relative to the same directory, where the file lies in it; else the whole one.
Json SarifRemapper::NameArtifact(const std::string& path, const Naming& naming)
{
    const bool isBaseKnown = !naming.m_base.empty();
    if (!naming.m_isAbsolute && !isBaseKnown)
    {
        Json artifact = {{"uri", UriOfPath(path)}};
        if (!naming.m_baseId.empty() && !path.starts_with('/') && !path.starts_with("../"))
            artifact["uriBaseId"] = naming.m_baseId;
        return artifact;
    }
    const std::string whole = ResolvedPath(path);
    const std::string base = isBaseKnown ? ResolvedPath(naming.m_base) + "/" : std::string();
    if (isBaseKnown && whole.starts_with(base))
        return {{"uri", UriOfPath(whole.substr(base.size()))}, {"uriBaseId", naming.m_baseId}};
    return {{"uri", s_fileScheme + UriOfPath(whole)}};
}

void SarifRemapper::Place(Json& location, const MessagePlace& place, const Naming& naming) const
{
    location["artifactLocation"] = NameArtifact(place.m_path, naming);
    const bool hasColumn = location["region"].contains("startColumn") || location["region"].empty();
    location["region"] = {{"startLine", place.m_line}};
    if (hasColumn)
        location["region"]["startColumn"] = m_outputs.ColumnIn(place, m_unit);
}

/// Where the last character of a region comes from, if it was copied.
std::optional<MessagePlace> SarifRemapper::EndOf(const Json& location)
{
    const Json& region = location["region"];
    const auto line = NumberIn(region, region.contains("endLine") ? "endLine" : "startLine");
    const auto behind = NumberIn(region, "endColumn");
    if (!line || !behind || *behind < 2)
        return std::nullopt;
    const auto output = m_outputs.Find(NamingOf(location).m_path);
    const auto last = output ? m_outputs.Map(*output, *line, *behind - 1, m_unit) : std::nullopt;
    return last && last->IsInFile() && last->m_isCopied ? std::optional(last->m_place)
                                                        : std::nullopt;
}

/// Adds the end to a region where it is as far from the beginning as it was `before`; elsewhere the
/// two were put side by side by the expansion, and what is between them in the source is not meant.
/// `end` is the last character.
void SarifRemapper::PlaceEnd(Json& region, const Json& before, const MessagePlace& begin,
                             const MessagePlace& end) const
{
    const ssize_t startLine = NumberIn(before, "startLine").value_or(1);
    const ssize_t lines = NumberIn(before, "endLine").value_or(startLine) - startLine;
    if (end.m_path != begin.m_path || end.m_line - begin.m_line != lines)
        return;
    const ssize_t behind = m_outputs.ColumnIn(end, m_unit) + 1;
    const ssize_t startColumn = NumberIn(before, "startColumn").value_or(1);
    const ssize_t width = NumberIn(before, "endColumn").value_or(1) - startColumn;
    if (lines == 0 && behind - m_outputs.ColumnIn(begin, m_unit) != width)
        return;
    if (before.contains("endLine"))
        region["endLine"] = end.m_line;
    region["endColumn"] = behind;
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
