// The plan script reader of celvane-batch: tk::plan_script over the whole text.
#include <cstdint>
#include <string>

#include "fuzz/fuzz_support.h"
#include "toolkit/script/plan_script.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size) {
  tk::plan_script script(std::string(reinterpret_cast<const char*>(data), size));
  if (!script.ok()) {
    FUZZ_CHECK(script.error_text().compare(0, 5, "line ") == 0);
    return 0;
  }
  // Steps come in the order of their lines, each with a verb.
  int line = 0;
  for (const tk::script_step& step : script.steps()) {
    FUZZ_CHECK(step.line > line && !step.verb.empty());
    line = step.line;
  }
  return 0;
}
