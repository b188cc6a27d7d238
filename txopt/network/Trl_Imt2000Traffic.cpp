#include "network/Trl_Imt2000Traffic.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>

#include "network/Trl_Imt2000Check.h"
#include "network/Trl_Imt2000Scanner.h"
#include "toolkit/directory.h"

namespace {

template <int N>
void set(double (&field)[N], const double (&values)[N]) {
  for (int k = 0; k < N; ++k) field[k] = values[k];
}

void to_linear(double* values, int count) {
  for (int k = 0; k < count; ++k) values[k] = std::pow(10.0, values[k] / 10.0);
}

const char* const entrada_lists[] = {"Occupancy={", "Average_Call_Dur={", "BitRate_DL={", "F_Asym={"};
const char* const datos_lists[] = {"Rp={", "Eb_NoUP_In={", "Eb_NoDL_In={", "Eb_NoUP_Out={", "Eb_NoDL_Out={", "Ep={"};

// Opens the file for the check; a file that does not open fails the check like a bad one.
int check(const tk::string& path, bool (*lines)(std::istream&), tk::string& error) {
  std::ifstream in(tk::to_native_path(path), std::ios::binary);
  if (in && lines(in)) return 0;
  error = "Incorrect Input File Format";
  return 1;
}

// The whole file for the parse, or the system's reason why it can't be read.
bool slurp(const tk::string& path, std::string& text, tk::string& error) {
  errno = 0;
  std::ifstream in(tk::to_native_path(path), std::ios::binary);
  if (!in) {
    error = std::strerror(errno ? errno : ENOENT);
    return false;
  }
  text.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return true;
}

}  // namespace

Trl_Imt2000Traffic::Trl_Imt2000Traffic()
    : entrada_file("Entrada.ent"), datos_file("Datos.ent"), uplink(true), poligono(1), vertices(1),
      quien(1, 5), densidad(1), scale(1.0) {
  vertices[0] = 4;
  for (int k = 0; k < 5; ++k) quien(0, k) = 1;
  densidad[0] = 291160;
  for (const tk::point& p : {tk::point(0, 0), tk::point(0, 1000), tk::point(1000, 1000), tk::point(1000, 0)})
    points.append(p);
  set(Occupancy, {1, 1, 1, 0.8, 1, 0.5});
  set(Average_Call_Dur, {53.3, 13.9, 30, 180, 156, 120});
  set(BitRate_DL, {2000, 384, 14, 128, 14, 16});
  set(F_Asym, {0.005, 0.026, 1, 1, 1, 1});
  set(Lambda[pedestrian], {0.06, 0.06, 0.03, 0.06, 0.03, 0.6});
  set(Lambda[vehiculos], {0.004, 0.004, 0.002, 0.004, 0.002, 0.6});
  set(Lambda[negocios], {0.12, 0.12, 0.06, 0.12, 0.06, 1.0});
  set(Lambda[domestico], {0.06, 0.06, 0.03, 0.06, 0.03, 0.13});
  set(Lambda[suburban], {0.06, 0.06, 0.03, 0.06, 0.03, 0.13});
  set(Lambda[rural], {0.004, 0.004, 0.002, 0.004, 0.002, 0.5});
  set(Penetration_Rate[pedestrian], {0.047, 0.077, 0.25, 0.005, 0.1, 0.6});
  set(Penetration_Rate[vehiculos], {0.047, 0.077, 0.25, 0.005, 0.1, 0.6});
  set(Penetration_Rate[negocios], {0.05, 0.08, 0.25, 0.01, 0.1, 0.6});
  set(Penetration_Rate[domestico], {0.047, 0.047, 0.25, 0.005, 0.1, 0.6});
  set(Penetration_Rate[suburban], {0.047, 0.047, 0.25, 0.005, 0.1, 0.6});
  set(Penetration_Rate[rural], {0.047, 0.047, 0.25, 0.005, 0.1, 0.6});
  set(density, {108000, 695, 180000, 380, 7200, 36});
  set(Rp, {8, 64, 144, 384, 30.4, 60.8, 243.2});
  set(Ep, {1, 1, 1, 1, 0.9, 0.9, 0.9});
  set(Eb_NoUP_In, {4.8, 2.3, 2.3, 2.3, 1.5, 1.5, 1.5});
  set(Eb_NoDL_In, {6.7, 1.9, 1.9, 1.9, 1.2, 1.2, 1.2});
  set(Eb_NoUP_Out, {5.8, 3.1, 2.48, 2.2, 2.65, 2.45, 1.4});
  set(Eb_NoDL_Out, {7.8, 2.8, 2.0, 2.15, 2.1, 1.78, 1.05});
  for (double* values : {Eb_NoUP_In, Eb_NoDL_In, Eb_NoUP_Out, Eb_NoDL_Out}) to_linear(values, bearers);
}

Trl_Imt2000Traffic& Trl_Imt2000Traffic::instance() {
  static Trl_Imt2000Traffic traffic;
  return traffic;
}

// Each read below stands for one scanf call; their results are not looked at, so a line
// that stops the reader leaves every value behind it as it was.
int Trl_Imt2000Traffic::read_entrada(const tk::string& path) {
  entrada_file = path;
  if (check(path, Trl_Imt2000Check::entrada, error)) return 1;
  std::string text, heading;
  if (!slurp(path, text, error)) return 2;
  Trl_Imt2000Scanner in(std::move(text));
  in.word(heading);  // "DATOS"
  in.word(heading);  // "IMT2000"
  double* per_service[] = {Occupancy, Average_Call_Dur, BitRate_DL, F_Asym};
  for (int k = 0; k < 4; ++k) in.list(entrada_lists[k], per_service[k], services);
  in.word(heading);  // "URBAN"
  for (int e = 0; e < environments; ++e) {
    in.word(heading);
    in.list("Lambda={", Lambda[e], services);
    in.list("Penetration_Rate={", Penetration_Rate[e], services);
  }
  return 0;
}

int Trl_Imt2000Traffic::read_datos(const tk::string& path) {
  datos_file = path;
  if (check(path, Trl_Imt2000Check::datos, error)) return 1;
  std::string text, word;
  if (!slurp(path, text, error)) return 2;
  Trl_Imt2000Scanner in(std::move(text));
  in.word(word);  // "DATOS"
  in.space();
  if (in.literal("Enlace=") && in.word(word)) {
    if (word == "Uplink") uplink = true;
    if (word == "Downlink") uplink = false;
  }
  double* per_bearer[] = {Rp, Eb_NoUP_In, Eb_NoDL_In, Eb_NoUP_Out, Eb_NoDL_Out, Ep};
  for (int k = 0; k < 6; ++k) in.list(datos_lists[k], per_bearer[k], bearers);
  for (int k = 1; k <= 4; ++k) to_linear(per_bearer[k], bearers);
  in.space();
  if (in.literal("poligono=")) in.whole(poligono);
  if (poligono < 0) poligono = 0;
  // Made anew: what the file does not reach is zero.
  vertices = tk::array<int>(poligono);
  densidad = tk::array<double>(poligono);
  quien = tk::array2<int>(poligono, 5);
  points.clear();
  for (int p = 0; p < poligono; ++p) {
    in.space();
    if (in.literal("densidad=")) in.real(densidad[p]);
    in.list("quien={", &quien(p, 0), 5);
    in.space();
    if (in.literal("vertices=")) in.whole(vertices[p]);
    for (int k = 0; k < vertices[p]; ++k) {
      double x = 0, y = 0;
      in.space();
      if (!(in.literal("(") && in.real(x) && in.literal(",") && in.real(y) && in.literal(")"))) break;
      points.append(tk::point(x, y));
    }
  }
  return 0;
}

tk::list<tk::point> Trl_Imt2000Traffic::polygon_vertices(int p) const {
  long long skip = 0;
  for (int q = 0; q < p; ++q) skip += vertices[q] > 0 ? vertices[q] : 0;
  tk::list<tk::point> result;
  long long k = 0;
  for (const tk::point& point : points) {
    if (k >= skip + vertices[p]) break;
    if (k++ >= skip) result.append(point);
  }
  return result;
}
