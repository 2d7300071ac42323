#include "xmp_namespaces.h"

#include <string>
#include <utility>
#include <vector>

namespace imagefile {

namespace {

using Prefix = std::pair<std::string, std::string>; // prefix, namespace

std::vector<Prefix> &KnownPrefixes()
{
    static std::vector<Prefix> prefixes;
    return prefixes;
}

/// Returns the namespace of a prefix in Exiv2's table; empty if there is none.
std::string NamespaceOf(const std::string &prefix)
{
    try {
        return Exiv2::XmpProperties::ns(prefix);
    } catch (const Exiv2::Error &) {
        return std::string();
    }
}

/// Gives a namespace the first free prefix among PREFIX_2, PREFIX_3 and so on.
void Rename(const std::string &uri, const std::string &prefix)
{
    int number = 2;
    while (!NamespaceOf(prefix + '_' + std::to_string(number)).empty())
        ++number;
    Exiv2::XmpProperties::unregisterNs(uri);
    Exiv2::XmpProperties::registerNs(uri, prefix + '_' + std::to_string(number));
}

} // namespace

void DefineXmpPrefixes()
{
    const Prefix own = {"vitrelux", "urn:vitrelux:correction:1.0#"}; // see docs/fitting.md
    Exiv2::XmpProperties::registerNs(own.second, own.first);
    KnownPrefixes().push_back(own); // not in the list below: the XMP toolkit learns it only when a packet is written
    Exiv2::Dictionary all;          // includes prefixes that only the XMP toolkit knows
    Exiv2::XmpProperties::registeredNamespaces(all);
    for (const auto &[prefix, uri] : all) {
        if (NamespaceOf(prefix) == uri)
            KnownPrefixes().emplace_back(prefix, uri);
    }
}

unsigned RestoreXmpPrefixes(const XmpWriting &)
{
    static unsigned times = 0; // guarded by the lock of XmpWriting
    bool isRestored = false;
    for (const auto &[prefix, uri] : KnownPrefixes()) {
        const std::string other = NamespaceOf(prefix);
        if (other == uri)
            continue;
        if (!other.empty())
            Rename(other, prefix);
        if (NamespaceOf(prefix) != uri) // Rename restores only namespaces that are built into Exiv2
            Exiv2::XmpProperties::registerNs(uri, prefix);
        isRestored = true;
    }
    return times += isRestored ? 1 : 0;
}

} // namespace imagefile
