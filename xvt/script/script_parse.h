/// The text of a script made into statements.
#pragma once

#include <optional>
#include <vector>

#include "xvt/script/script_source.h"
#include "xvt/script/script_statement.h"

namespace xvt::script {

/// All statements of a script, or nothing and `error`. What hangs on variables ("when", "each") is settled here: a run
/// has its values from the beginning.
std::optional<std::vector<Statement>> parse(const Source& source, const Values& values, ParseError* error);

}  // namespace xvt::script
