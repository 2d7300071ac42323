// Code shared by all formats: rows generated on demand, suffixes.
#include "codec.h"

namespace imagefile {

Status RowMaker::Make(int firstRow, int rows, std::uint8_t *data, std::uint32_t bytesPerLine) const
{
    const int error = callback(firstRow, rows, data, bytesPerLine, userData);
    return error == GFL_NO_ERROR
        ? Status::Ok()
        : Status::Fail(static_cast<GflError>(error), Text("can't generate the rows from %d on", firstRow));
}

std::string LowerCaseSuffix(const std::string &path)
{
    const std::size_t dot = path.find_last_of("./");
    if (dot == std::string::npos || path[dot] == '/')
        return std::string();
    std::string suffix = path.substr(dot);
    for (char &c : suffix) { // not tolower, which keeps 'I' in a Turkish locale
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return suffix;
}

} // namespace imagefile
