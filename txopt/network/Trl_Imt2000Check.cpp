#include "network/Trl_Imt2000Check.h"

#include <climits>

namespace {

// The next line without its line end; a carriage return before it is dropped, since the
// files may come from a system that ends lines with one.
bool next_line(std::istream& in, std::string& line) {
  if (!std::getline(in, line)) return false;
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return true;
}

bool line_is(std::istream& in, const char* word) {
  std::string line;
  return next_line(in, line) && line == word;
}

bool list_line(std::istream& in, const char* keyword, int count) {
  std::string line;
  return next_line(in, line) && Trl_Imt2000Check::list(line, keyword, count);
}

// A keyword-and-number line; its number goes to value.
bool count_line(std::istream& in, const char* keyword, int& value) {
  std::string line;
  if (!next_line(in, line) || !Trl_Imt2000Check::keyword_number(line, keyword)) return false;
  value = Trl_Imt2000Check::whole(line.substr(line.find('=') + 1));
  return true;
}

bool polygon_lines(std::istream& in) {
  std::string line;
  int count = 0;
  if (!next_line(in, line) || !Trl_Imt2000Check::keyword_number(line, "densidad=")) return false;
  if (!list_line(in, "quien={", 5) || !count_line(in, "vertices=", count)) return false;
  for (int k = 0; k < count; ++k)
    if (!next_line(in, line) || !Trl_Imt2000Check::vertex(line)) return false;
  return true;
}

}  // namespace

bool Trl_Imt2000Check::number(const std::string& text) {
  int points = 0;
  for (char c : text) {
    if (c == '.')
      ++points;
    else if (c < '0' || c > '9')
      return false;
  }
  return points <= 1;
}

bool Trl_Imt2000Check::list(const std::string& line, const std::string& keyword, int count) {
  size_t open = line.find('{');
  if (open == std::string::npos || line.substr(0, open + 1) != keyword) return false;
  size_t from = open + 1;
  for (int k = 1; k < count; ++k) {
    size_t comma = line.find(',', from);
    if (comma == std::string::npos || !number(line.substr(from, comma - from))) return false;
    from = comma + 1;
  }
  size_t close = line.find('}', from);
  return close != std::string::npos && close + 1 == line.size();
}

bool Trl_Imt2000Check::keyword_number(const std::string& line, const std::string& keyword) {
  size_t equals = line.find('=');
  return equals != std::string::npos && line.substr(0, equals + 1) == keyword &&
         number(line.substr(equals + 1));
}

bool Trl_Imt2000Check::vertex(const std::string& line) {
  size_t open = line.find('(');
  if (open == std::string::npos) return false;
  size_t comma = line.find(',', open + 1);
  if (comma == std::string::npos) return false;
  size_t close = line.find(')', comma + 1);
  return close != std::string::npos && number(line.substr(open + 1, comma - open - 1)) &&
         number(line.substr(comma + 1, close - comma - 1));
}

bool Trl_Imt2000Check::entrada(std::istream& in) {
  if (!line_is(in, "DATOS IMT2000")) return false;
  for (const char* keyword : {"Occupancy={", "Average_Call_Dur={", "BitRate_DL={", "F_Asym={"})
    if (!list_line(in, keyword, 6)) return false;
  if (!line_is(in, "URBAN")) return false;
  for (const char* name : {"Pedestrian", "Vehiculos", "Negocios", "Domestico", "SUBURBAN", "RURAL"})
    if (!line_is(in, name) || !list_line(in, "Lambda={", 6) || !list_line(in, "Penetration_Rate={", 6))
      return false;
  return true;
}

bool Trl_Imt2000Check::datos(std::istream& in) {
  std::string line;
  if (!line_is(in, "DATOS") || !next_line(in, line)) return false;
  if (line != "Enlace=Uplink" && line != "Enlace=Downlink") return false;
  for (const char* keyword : {"Rp={", "Eb_NoUP_In={", "Eb_NoDL_In={", "Eb_NoUP_Out={", "Eb_NoDL_Out={", "Ep={"})
    if (!list_line(in, keyword, 7)) return false;
  int count = 0;
  if (!count_line(in, "poligono=", count)) return false;
  for (int p = 0; p < count; ++p)
    if (!polygon_lines(in)) return false;
  return true;
}

int Trl_Imt2000Check::whole(const std::string& number) {
  long long value = 0;
  for (char c : number) {
    if (c < '0' || c > '9') break;
    value = value * 10 + (c - '0');
    if (value > INT_MAX) return INT_MAX;
  }
  return static_cast<int>(value);
}
