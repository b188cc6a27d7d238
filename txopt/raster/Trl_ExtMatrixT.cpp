#include "raster/Trl_ExtMatrixT.h"

template class Trl_ExtMatrixT<double, double>;
