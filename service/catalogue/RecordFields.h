#pragma once

// The names of a catalogue record's fields: the long keys it is stored and imported with, and the other
// names the wire uses for the same fields. One table each, so no key is spelled twice.

#include <QLatin1StringView>

namespace RecordFields {

struct KeyPair
{
    QLatin1StringView wire;
    QLatin1StringView stored;
};

// Text fields a record may carry (long keys).
inline constexpr QLatin1StringView textFields[] = {
    QLatin1StringView("name"),
    QLatin1StringView("current_version"),
    QLatin1StringView("min_os"),
    QLatin1StringView("opens_in_window"),
    QLatin1StringView("vld_install_from_link"),
    QLatin1StringView("paidupgrade"),
    QLatin1StringView("link"),
    QLatin1StringView("mas_download_url"),
    QLatin1StringView("version_override"),
    QLatin1StringView("mas_version"),
    QLatin1StringView("mas_date"),
    QLatin1StringView("stability"),
    QLatin1StringView("license"),
    QLatin1StringView("file_size"),
    QLatin1StringView("developer"),
    QLatin1StringView("shortdescr"),
    QLatin1StringView("release_notes"),
    QLatin1StringView("sort_date"),
    QLatin1StringView("vl_date"),
    QLatin1StringView("keywords"),
    QLatin1StringView("filehash"),
    QLatin1StringView("descr"),
    QLatin1StringView("homepage"),
};

// Lists of texts that matching reads.
inline constexpr QLatin1StringView bundleIds("bundle_ids");
inline constexpr QLatin1StringView bundleNames("bundle_names");
inline constexpr QLatin1StringView displayNames("display_names");
inline constexpr QLatin1StringView ranking("ranking"); // a number
inline constexpr QLatin1StringView deal("deal");       // an object with the deal's texts below
inline constexpr QLatin1StringView dealFields[] = {
    QLatin1StringView("id"),    QLatin1StringView("link"),       QLatin1StringView("discount"),
    QLatin1StringView("price"), QLatin1StringView("appversion"), QLatin1StringView("parent_sales_profile_id"),
};

// The short keys of a matching reply ("m", "h" and "i" are filled apart; "e1" is made absolute per request).
inline constexpr KeyPair shortKeys[] = {
    {QLatin1StringView("g"), QLatin1StringView("name")},
    {QLatin1StringView("g1"), QLatin1StringView("keywords")},
    {QLatin1StringView("j"), QLatin1StringView("current_version")},
    {QLatin1StringView("r"), QLatin1StringView("mas_date")},
    {QLatin1StringView("l"), QLatin1StringView("min_os")},
    {QLatin1StringView("x"), QLatin1StringView("opens_in_window")},
    {QLatin1StringView("y"), QLatin1StringView("vld_install_from_link")},
    {QLatin1StringView("z"), QLatin1StringView("paidupgrade")},
    {QLatin1StringView("a1"), QLatin1StringView("mas_download_url")},
    {QLatin1StringView("v"), QLatin1StringView("version_override")},
    {QLatin1StringView("k"), QLatin1StringView("mas_version")},
    {QLatin1StringView("n"), QLatin1StringView("stability")},
    {QLatin1StringView("o"), QLatin1StringView("license")},
    {QLatin1StringView("p"), QLatin1StringView("file_size")},
    {QLatin1StringView("u"), QLatin1StringView("developer")},
    {QLatin1StringView("t"), QLatin1StringView("shortdescr")},
    {QLatin1StringView("w"), QLatin1StringView("release_notes")},
    {QLatin1StringView("s"), QLatin1StringView("sort_date")},
    {QLatin1StringView("q"), QLatin1StringView("vl_date")},
    {QLatin1StringView("filehash"), QLatin1StringView("filehash")},
};

// The keys of the app-info reply ("bundleid" and "link" are filled apart).
inline constexpr KeyPair appInfoKeys[] = {
    {QLatin1StringView("shortDescription"), QLatin1StringView("shortdescr")},
    {QLatin1StringView("developer"), QLatin1StringView("developer")},
    {QLatin1StringView("minOS"), QLatin1StringView("min_os")},
    {QLatin1StringView("releaseNotes"), QLatin1StringView("release_notes")},
    {QLatin1StringView("vlDate"), QLatin1StringView("vl_date")},
    {QLatin1StringView("license"), QLatin1StringView("license")},
    {QLatin1StringView("stability"), QLatin1StringView("stability")},
    {QLatin1StringView("descr"), QLatin1StringView("descr")},
    {QLatin1StringView("title"), QLatin1StringView("name")},
    {QLatin1StringView("filesize"), QLatin1StringView("file_size")},
    {QLatin1StringView("paidupgrade"), QLatin1StringView("paidupgrade")},
    {QLatin1StringView("version_override"), QLatin1StringView("version_override")},
    {QLatin1StringView("mas_download_url"), QLatin1StringView("mas_download_url")},
};

// Watch-list items carry these long keys as they are (plus "wl_id", "list_name", "vl_id" and "link").
inline constexpr QLatin1StringView watchListKeys[] = {
    QLatin1StringView("name"),
    QLatin1StringView("current_version"),
    QLatin1StringView("shortdescr"),
    QLatin1StringView("opens_in_window"),
    QLatin1StringView("vld_install_from_link"),
    QLatin1StringView("paidupgrade"),
    QLatin1StringView("mas_download_url"),
    QLatin1StringView("version_override"),
    QLatin1StringView("mas_version"),
    QLatin1StringView("min_os"),
    QLatin1StringView("stability"),
    QLatin1StringView("license"),
    QLatin1StringView("file_size"),
    QLatin1StringView("developer"),
    QLatin1StringView("release_notes"),
    QLatin1StringView("sort_date"),
    QLatin1StringView("vl_date"),
    QLatin1StringView("filehash"),
};

} // namespace RecordFields
