// `corvix info`: what a module's descriptor and file say, without running the module.
#pragma once

#include <string>

namespace corvix::tool {

enum class InfoForm { Table, Json, Xml };

// 0, or 1 when the file cannot be read or has no readable descriptor; standard error says so.
int info(const std::string& path, InfoForm form);

}  // namespace corvix::tool
