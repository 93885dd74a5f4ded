// The text of schema.sql, which the build puts into the program.
#pragma once

namespace paylodge::refhost {

extern const char* const kSchema;

}  // namespace paylodge::refhost
