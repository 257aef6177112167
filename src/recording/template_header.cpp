#include "recording/template_header.h"

#include <system_error>

#include "recording/abf_writer.h"
#include "recording/texts.h"

namespace vess {

TemplateHeaderResult EnsureTemplateHeader(const std::filesystem::path& folder) {
    TemplateHeaderResult result{folder / std::string(texts::kTemplateHeaderFileName), {}};
    std::error_code ec;
    if (std::filesystem::is_regular_file(result.path, ec)) return result;
    AbfWriteLayout abfLayout;  // one channel in pA, 50 us
    abfLayout.comment = "template header";
    result.error = WriteAbf(result.path, abfLayout, {});
    return result;
}

}  // namespace vess
