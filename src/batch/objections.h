#pragma once

#include "batch/batch_options.h"
#include "report/facts.h"

#include <string>
#include <vector>

namespace quillmere {

// What a pass says of its input and output. A nightly run has nobody who would see that the server's save was
// cut short, or that a list removes half the world.

/// What the user should look at: lines outside blocks, which are lost unless they go to a file of their own,
/// and removed blocks that look like two, so that one is lost which no filter selects.
std::vector<std::string> WarningsOfPass(const Facts& facts, const BatchOptions& options);

/// Why the output must not take its place, and what to do; empty when nothing speaks against it.
std::string Objection(const Facts& facts, const BatchOptions& options);

}  // namespace quillmere
