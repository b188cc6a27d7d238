// The two ".ent" readers: the line rules one by one, then whole files read into a record.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>

#include "network/Trl_Imt2000Check.h"
#include "network/Trl_Imt2000Traffic.h"
#include "support/TestFolder.h"
#include "toolkit/directory.h"

namespace fs = std::filesystem;

namespace {

enum rule { list6, list7, count, vertex };

struct line_case {
  rule kind;
  const char* line;
  bool passes;
};

bool check(const line_case& c) {
  switch (c.kind) {
    case list6: return Trl_Imt2000Check::list(c.line, "Lambda={", 6);
    case list7: return Trl_Imt2000Check::list(c.line, "Rp={", 7);
    case count: return Trl_Imt2000Check::keyword_number(c.line, "poligono=");
    case vertex: return Trl_Imt2000Check::vertex(c.line);
  }
  return false;
}

const line_case line_cases[] = {
    {list7, "Rp={8,64,144,384,30.4,60.8,243.2}", true},
    {list7, "Rp={8,64,144,384,30.4,60.8}", false},          // one too few: a "," is missing
    {list7, "Rp={8,64,144,384,30.4,60.8,243.2,9}", true},   // one too many: not looked at
    {list7, "Rp={8,64,144,384,30.4,60.8,-243.2}", true},    // the last value is not checked
    {list7, "Rp={8,-64,144,384,30.4,60.8,243.2}", false},
    {list7, "Rp={8,64,144,384,30.4,60.8,1e3}", true},
    {list7, "Rp={1e3,64,144,384,30.4,60.8,243.2}", false},
    {list7, "Rp={8, 64,144,384,30.4,60.8,243.2}", false},   // a blank is no digit
    {list7, "Rp={8,,144,384,30.4,60.8,243.2}", true},       // the empty number passes
    {list7, "Rp={8,6.4.4,144,384,30.4,60.8,243.2}", false},
    {list7, "Rp={8,64,144,384,30.4,60.8,243.2} ", false},   // nothing may follow the "}"
    {list7, "Rp={8,64,144,384,30.4,60.8,243.2}}", false},
    {list7, "Rp={8,64,144,384,30.4,60.8,243.2", false},
    {list7, "rp={8,64,144,384,30.4,60.8,243.2}", false},
    {list7, "", false},
    {list6, "Lambda={0.06,0.06,0.03,0.06,0.03,0.6}", true},
    {list6, "Penetration_Rate={0.06,0.06,0.03,0.06,0.03,0.6}", false},
    {count, "poligono=0", true},
    {count, "poligono=", true},
    {count, "poligono=12.5", true},
    {count, "poligono=-1", false},
    {count, "poligono= 1", false},
    {count, "Poligono=1", false},
    {count, "poligono=1e3", false},
    {vertex, "(0,1000)", true},
    {vertex, "(12.5,.5)", true},
    {vertex, "x(1,2)y", true},  // only the text between the brackets is looked at
    {vertex, "(-1,2)", false},
    {vertex, "(1, 2)", false},
    {vertex, "(1,2", false},
    {vertex, "1,2)", false},
    {vertex, "(1;2)", false},
};

TEST(Imt2000Check, LineRules) {
  for (const line_case& c : line_cases) EXPECT_EQ(check(c), c.passes) << c.line;
}

const char* const entrada_text =
    "DATOS IMT2000\n"
    "Occupancy={1,2,3,4,5,6}\n"
    "Average_Call_Dur={11,12,13,14,15,16}\n"
    "BitRate_DL={21,22,23,24,25,26}\n"
    "F_Asym={.1,.2,.3,.4,.5,.6}\n"
    "URBAN\n"
    "Pedestrian\nLambda={100,101,102,103,104,105}\nPenetration_Rate={200,201,202,203,204,205}\n"
    "Vehiculos\nLambda={110,111,112,113,114,115}\nPenetration_Rate={210,211,212,213,214,215}\n"
    "Negocios\nLambda={120,121,122,123,124,125}\nPenetration_Rate={220,221,222,223,224,225}\n"
    "Domestico\nLambda={130,131,132,133,134,135}\nPenetration_Rate={230,231,232,233,234,235}\n"
    "SUBURBAN\nLambda={140,141,142,143,144,145}\nPenetration_Rate={240,241,242,243,244,245}\n"
    "RURAL\nLambda={150,151,152,153,154,155}\nPenetration_Rate={250,251,252,253,254,255}\n";

const char* const datos_text =
    "DATOS\n"
    "Enlace=Downlink\n"
    "Rp={1,2,3,4,5,6,7}\n"
    "Eb_NoUP_In={0,10,20,0,0,0,0}\n"
    "Eb_NoDL_In={3,0,0,0,0,0,0}\n"
    "Eb_NoUP_Out={0,0,0,0,0,0,10}\n"
    "Eb_NoDL_Out={0,0,0,0,0,0,-10}\n"
    "Ep={.5,.5,.5,.5,.5,.5,.5}\n"
    "poligono=2\n"
    "densidad=1000\nquien={2,0,0,0,0}\nvertices=3\n(0,0)\n(100,0)\n(0,100)\n"
    "densidad=2000.5\nquien={1,1,0,1,0}\nvertices=4\n(200,200)\n(300,200)\n(300,300)\n(200,300)";

class Imt2000Read : public testing::Test {
 protected:
  void SetUp() override {
    dir = test_folder("imt2000_read");
    fs::create_directories(dir);
  }
  void TearDown() override { fs::remove_all(dir); }

  tk::string file(const std::string& name, const std::string& text) {
    std::ofstream(dir / name, std::ios::binary) << text;
    return tk::to_drive_path((dir / name).string());
  }
  // The Datos text with one line replaced (0 is the first).
  static std::string datos_with(int line, const std::string& replacement) {
    std::string text = datos_text;
    size_t from = 0;
    for (int k = 0; k < line; ++k) from = text.find('\n', from) + 1;
    size_t end = text.find('\n', from);
    return text.replace(from, end == std::string::npos ? std::string::npos : end - from, replacement);
  }

  fs::path dir;
  Trl_Imt2000Traffic traffic;
};

TEST_F(Imt2000Read, AGoodEntradaFillsEveryField) {
  ASSERT_EQ(traffic.read_entrada(file("Entrada.ent", entrada_text)), 0) << traffic.error;
  for (int s = 0; s < 6; ++s) {
    EXPECT_EQ(traffic.Occupancy[s], 1 + s);
    EXPECT_EQ(traffic.Average_Call_Dur[s], 11 + s);
    EXPECT_EQ(traffic.BitRate_DL[s], 21 + s);
    EXPECT_DOUBLE_EQ(traffic.F_Asym[s], 0.1 * (s + 1));
    for (int e = 0; e < 6; ++e) {
      EXPECT_EQ(traffic.Lambda[e][s], 100 + 10 * e + s);
      EXPECT_EQ(traffic.Penetration_Rate[e][s], 200 + 10 * e + s);
    }
  }
}

TEST_F(Imt2000Read, AGoodDatosFillsEveryFieldWithEbNoMadeLinear) {
  ASSERT_EQ(traffic.read_datos(file("Datos.ent", datos_text)), 0) << traffic.error;
  EXPECT_FALSE(traffic.uplink);
  for (int c = 0; c < 7; ++c) {
    EXPECT_EQ(traffic.Rp[c], c + 1);
    EXPECT_EQ(traffic.Ep[c], 0.5);
  }
  EXPECT_DOUBLE_EQ(traffic.Eb_NoUP_In[1], 10);
  EXPECT_DOUBLE_EQ(traffic.Eb_NoUP_In[2], 100);
  EXPECT_DOUBLE_EQ(traffic.Eb_NoDL_In[0], std::pow(10, 0.3));
  EXPECT_DOUBLE_EQ(traffic.Eb_NoUP_Out[6], 10);
  EXPECT_DOUBLE_EQ(traffic.Eb_NoDL_Out[6], 0.1);
  EXPECT_DOUBLE_EQ(traffic.Eb_NoDL_Out[0], 1);
  ASSERT_EQ(traffic.poligono, 2);
  EXPECT_EQ(traffic.densidad[0], 1000);
  EXPECT_EQ(traffic.densidad[1], 2000.5);
  EXPECT_EQ(traffic.vertices[0], 3);
  EXPECT_EQ(traffic.vertices[1], 4);
  const int quien[2][5] = {{2, 0, 0, 0, 0}, {1, 1, 0, 1, 0}};
  for (int p = 0; p < 2; ++p)
    for (int k = 0; k < 5; ++k) EXPECT_EQ(traffic.quien(p, k), quien[p][k]);
  EXPECT_EQ(traffic.points.size(), 7);
  tk::list<tk::point> second = traffic.polygon_vertices(1);
  ASSERT_EQ(second.size(), 4);
  EXPECT_EQ(second.head(), tk::point(200, 200));
  EXPECT_EQ(second.tail(), tk::point(200, 300));
}

// Files the check refuses; the record stays as it was.
TEST_F(Imt2000Read, BadFilesFailTheCheckAndLeaveTheRecord) {
  const std::string bad[] = {
      datos_with(1, "Enlace=uplink"),
      datos_with(4, ""),                          // a blank line
      datos_with(3, "Eb_NoUP_In={0,10,20,0,0,0}"),  // one value too few
      datos_with(8, "poligono=99999999999999999999"),
      datos_with(11, "vertices=4000000000"),
      std::string(datos_text).substr(0, std::string(datos_text).size() - 4),  // ends mid-line
      std::string("DATOS\n\0\xff\xfe binary\n", 17),
      "",
  };
  for (const std::string& text : bad) {
    EXPECT_EQ(traffic.read_datos(file("bad.ent", text)), 1) << text;
    EXPECT_EQ(traffic.error, tk::string("Incorrect Input File Format"));
  }
  EXPECT_EQ(traffic.read_datos(tk::to_drive_path((dir / "missing.ent").string())), 1);
  EXPECT_EQ(traffic.read_entrada(tk::to_drive_path(dir.string())), 1);  // a directory
  EXPECT_EQ(traffic.read_entrada(file("bad.ent", std::string(entrada_text, 60))), 1);
  Trl_Imt2000Traffic defaults;
  EXPECT_TRUE(traffic.uplink);
  EXPECT_EQ(traffic.poligono, 1);
  EXPECT_EQ(traffic.Rp[6], defaults.Rp[6]);
  EXPECT_EQ(traffic.Eb_NoUP_In[0], defaults.Eb_NoUP_In[0]);
}

// A line with one value too many passes the check; the reader takes the values before the
// extra one and stops there, so the values behind it keep what they held.
TEST_F(Imt2000Read, AnExtraValueStopsTheReader) {
  ASSERT_EQ(traffic.read_datos(file("Datos.ent", datos_with(7, "Ep={.5,.5,.5,.5,.5,.5,.5,9}"))), 0);
  EXPECT_EQ(traffic.Rp[3], 4);
  EXPECT_EQ(traffic.Ep[6], 0.5);
  EXPECT_EQ(traffic.poligono, 1);  // the default, not the file's 2
  EXPECT_EQ(traffic.densidad[0], 0);  // made anew, not reached
  EXPECT_EQ(traffic.points.size(), 0);

  Trl_Imt2000Traffic other;
  std::string entrada = entrada_text;
  entrada.replace(entrada.find("6}"), 2, "6,7}");
  ASSERT_EQ(other.read_entrada(file("Entrada.ent", entrada)), 0);
  EXPECT_EQ(other.Occupancy[5], 6);
  EXPECT_EQ(other.Average_Call_Dur[0], Trl_Imt2000Traffic().Average_Call_Dur[0]);
}

TEST_F(Imt2000Read, QuirksThatPassTheCheck) {
  // No polygon at all.
  std::string none = datos_text;
  none = none.substr(0, none.find("poligono=")) + "poligono=0\n";
  ASSERT_EQ(traffic.read_datos(file("Datos.ent", none)), 0);
  EXPECT_EQ(traffic.poligono, 0);
  EXPECT_EQ(traffic.points.size(), 0);
  // A minus and a huge number in the last place, Windows line ends, no final line end.
  std::string odd;
  for (char c : datos_with(2, "Rp={1,2,3,4,5,6,-1e999}")) odd += c == '\n' ? std::string("\r\n") : std::string(1, c);
  ASSERT_EQ(traffic.read_datos(file("Datos.ent", odd)), 0);
  EXPECT_EQ(traffic.Rp[6], -HUGE_VAL);
  EXPECT_EQ(traffic.points.size(), 7);
}

}  // namespace
