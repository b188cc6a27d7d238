#include "search/Trl_GaSearch.h"

Trl_GaSearch ga_search;
