#include "search/Trl_GaContext.h"

#include "search/MyAlleleSetArray.h"

Trl_GaContext& Trl_GaContext::current() {
  static Trl_GaContext context;
  return context;
}

void Trl_GaContext::clear() {
  assignment = nullptr;
  validate_downlink = false;
  allele_sets.reset();
  tx_cells = tk::array<int>();
}

Trl_GaContext::Scope::Scope(Trl_Assignment& candidate, bool validate_downlink) {
  Trl_GaContext& context = current();
  context.clear();
  context.assignment = &candidate;
  context.validate_downlink = validate_downlink;
}

Trl_GaContext::Scope::~Scope() { current().clear(); }
