// From GIS data to a Celvane plan and back: a GeoTIFF in geographic coordinates and building
// footprints made here with GDAL are imported with celvane-import, the plan is read with the
// program's own readers and computed in celvane-batch, and celvane-export's GeoJSON is read
// back with GDAL. Positions are checked against transformations worked out here.
#include <gtest/gtest.h>

#include <gdal_priv.h>
#include <ogr_spatialref.h>
#include <ogrsf_frmts.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "app/Trl_Planner.h"
#include "geo/GeoSidecar.h"
#include "raster/Trl_CoverageRaster.h"
#include "raster/Trl_Terrain.h"
#include "toolkit/directory.h"

namespace {

namespace fs = std::filesystem;

// The DEM: 200 by 200 pixels of 0.0001 degrees from 8.5 E, 47.4 N down to the south-east,
// ground rising 0.5 m per pixel eastward from 400 m.
const double lon0 = 8.5, lat0 = 47.4, step = 0.0001;
double ground_at(double lon) { return 400 + 0.5 * (lon - lon0) / step - 0.25; }

std::string tool(const char* name) { return std::string(CELVANE_BINARY_DIR) + "/apps/" + name; }

// Runs a command; its status, its output (or only its errors) in `out`.
int run(const std::string& command, std::string& out, bool errors_only = false) {
  const std::string log = fs::temp_directory_path() / ("geo_run_" + std::to_string(getpid()));
  const int status = std::system((command + (errors_only ? " 2> " + log + " >/dev/null" : " > " + log + " 2>&1")).c_str());
  std::ifstream in(log);
  out.assign(std::istreambuf_iterator<char>(in), {});
  fs::remove(log);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

OGRSpatialReference system(int epsg) {
  OGRSpatialReference s;
  s.importFromEPSG(epsg);
  s.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  return s;
}

void transform(int from, int to, double& x, double& y) {
  OGRSpatialReference a = system(from), b = system(to);
  std::unique_ptr<OGRCoordinateTransformation> t(OGRCreateCoordinateTransformation(&a, &b));
  ASSERT_TRUE(t && t->Transform(1, &x, &y));
}

void make_dem(const std::string& path, bool with_system) {
  GDALDriver* tiff = GetGDALDriverManager()->GetDriverByName("GTiff");
  GDALDatasetUniquePtr d(tiff->Create(path.c_str(), 200, 200, 1, GDT_Float32, nullptr));
  double gt[6] = {lon0, step, 0, lat0, 0, -step};
  d->SetGeoTransform(gt);
  if (with_system) {
    OGRSpatialReference wgs84 = system(4326);
    d->SetSpatialRef(&wgs84);
  }
  std::vector<float> row(200);
  for (int c = 0; c < 200; ++c) row[c] = static_cast<float>(ground_at(lon0 + (c + 0.5) * step));
  for (int r = 0; r < 200; ++r)
    ASSERT_EQ(d->GetRasterBand(1)->RasterIO(GF_Write, 0, r, 200, 1, row.data(), 200, 1, GDT_Float32, 0, 0), CE_None);
}

// Rectangles in UTM 32N with a height each, as a GeoJSON layer in that system.
void make_footprints(const std::string& path, const std::vector<std::array<double, 5>>& boxes) {
  GDALDriver* json = GetGDALDriverManager()->GetDriverByName("GeoJSON");
  GDALDatasetUniquePtr d(json->Create(path.c_str(), 0, 0, 0, GDT_Unknown, nullptr));
  OGRSpatialReference utm = system(32632);
  OGRLayer* layer = d->CreateLayer("buildings", &utm, wkbPolygon, nullptr);
  OGRFieldDefn height("height", OFTReal);
  layer->CreateField(&height);
  for (const auto& b : boxes) {
    OGRLinearRing ring;
    ring.addPoint(b[0], b[1]);
    ring.addPoint(b[2], b[1]);
    ring.addPoint(b[2], b[3]);
    ring.addPoint(b[0], b[3]);
    ring.closeRings();
    OGRPolygon polygon;
    polygon.addRing(&ring);
    OGRFeature* f = OGRFeature::CreateFeature(layer->GetLayerDefn());
    f->SetField("height", b[4]);
    f->SetGeometry(&polygon);
    EXPECT_EQ(layer->CreateFeature(f), OGRERR_NONE);
    OGRFeature::DestroyFeature(f);
  }
}

class GeoImport : public ::testing::Test {
 protected:
  void SetUp() override {
    GDALAllRegister();
    dir = "/tmp/celvane_geo_" + std::to_string(getpid());
    fs::create_directories(dir);
    // Bounds in UTM 32N well inside the DEM, on a 5 m lattice.
    double x = lon0 + 0.004, y = lat0 - 0.016;
    transform(4326, 32632, x, y);
    xmin = std::floor(x / 5) * 5;
    ymin = std::floor(y / 5) * 5;
  }
  void TearDown() override { fs::remove_all(dir); }

  std::string import_terrain(const std::string& dem, double bx0, double by0, double bx1, double by1, int& status,
                             bool errors_only = false) {
    std::string out;
    status = run(tool("celvane-import") + " terrain --dem " + dem + " --buildings " + dir + "/fp.geojson --cell 5" +
                     " --bounds " + std::to_string(bx0) + " " + std::to_string(by0) + " " + std::to_string(bx1) +
                     " " + std::to_string(by1) + " --out " + dir + "/city",
                 out, errors_only);
    return out;
  }

  std::string dir;
  double xmin = 0, ymin = 0;
};

}  // namespace

TEST_F(GeoImport, TerrainLandsOnItsCellsAndComesBackThroughTheSidecar) {
  make_dem(dir + "/dem.tif", true);
  // One building of 20 m over cells 10..14 by 20..24 (cell edges on the 5 m lattice), one
  // far outside the bounds.
  make_footprints(dir + "/fp.geojson", {{xmin + 50, ymin + 100, xmin + 75, ymin + 125, 20},
                                        {xmin - 5000, ymin - 5000, xmin - 4000, ymin - 4000, 30}});
  int status = 0;
  const std::string said = import_terrain(dir + "/dem.tif", xmin, ymin, xmin + 500, ymin + 400, status);
  ASSERT_EQ(status, 0) << said;
  EXPECT_NE(said.find("is taken to WGS 84 / UTM zone 32N (EPSG:32632)"), std::string::npos) << said;

  GeoSidecar sidecar;
  std::string error;
  ASSERT_TRUE(sidecar.read(dir + "/city.geo.json", error)) << error;
  EXPECT_EQ(sidecar.columns, 100);
  EXPECT_EQ(sidecar.rows, 80);
  EXPECT_DOUBLE_EQ(sidecar.x0, xmin + 2.5);
  Trl_Terrain terrain;
  terrain.load(tk::to_drive_path(dir + "/city.map"), [](const tk::string& s) { ADD_FAILURE() << s.str(); });
  ASSERT_TRUE(terrain.loaded());

  // A known geographic point: its cell holds the DEM's ground there, and the cell's centre
  // goes back through the sidecar to within half a cell of the point.
  double lon = lon0 + 0.0071, lat = lat0 - 0.0153, x = lon, y = lat;
  transform(4326, 32632, x, y);
  const int i = static_cast<int>(std::lround((x - sidecar.x0) / 5)), j = static_cast<int>(std::lround((y - sidecar.y0) / 5));
  EXPECT_NEAR(terrain.height(i, j), ground_at(lon), 2.0);
  double back_x = i * 5 + sidecar.x0, back_y = j * 5 + sidecar.y0;
  transform(32632, 4326, back_x, back_y);
  double px = lon, py = lat, qx = back_x, qy = back_y;
  transform(4326, 32632, px, py);
  transform(4326, 32632, qx, qy);
  EXPECT_LE(std::hypot(px - qx, py - qy), 2.5 * std::sqrt(2.0) + 1e-6);

  // The footprint raises exactly its 5 by 5 cells by 20 m and marks them built.
  int built = 0;
  for (int c = 0; c < 100; ++c)
    for (int r = 0; r < 80; ++r) {
      const bool inside = c >= 10 && c < 15 && r >= 20 && r < 25;
      EXPECT_EQ(!terrain.is_open(c, r), inside) << c << "," << r;
      built += !terrain.is_open(c, r);
      if (inside) {
        EXPECT_NEAR(terrain.height(c, r) - terrain.height(c, 19), 20, 1) << c << "," << r;
      }
    }
  EXPECT_EQ(built, 25);
}

TEST_F(GeoImport, BadInputSaysWhyInOneLineAndWritesNothing) {
  make_dem(dir + "/dem.tif", true);
  make_dem(dir + "/bare.tif", false);
  make_footprints(dir + "/fp.geojson", {});
  struct Case {
    std::string dem;
    double bx0, by0, bx1, by1;
    const char* reason;
  };
  const Case cases[] = {
      {dir + "/bare.tif", xmin, ymin, xmin + 500, ymin + 400, "has no coordinate system"},
      {dir + "/dem.tif", xmin + 1e6, ymin, xmin + 1e6 + 500, ymin + 400, "the bounds do not overlap"},
      {dir + "/dem.tif", xmin, ymin, xmin + 500000, ymin + 400000, "Celvane's rasters hold at most"},
  };
  for (const Case& c : cases) {
    int status = 0;
    const std::string said = import_terrain(c.dem, c.bx0, c.by0, c.bx1, c.by1, status, true);
    EXPECT_EQ(status, 1) << said;
    EXPECT_NE(said.find(c.reason), std::string::npos) << said;
    EXPECT_EQ(std::count(said.begin(), said.end(), '\n'), 1) << said;
    EXPECT_FALSE(fs::exists(dir + "/city.map") || fs::exists(dir + "/city.map.part")) << said;
  }
  std::ofstream(dir + "/sites.csv") << "name,lon\nA,8.5\n";
  int status = 0;
  std::string said;
  status = run(tool("celvane-import") + " sites --csv " + dir + "/sites.csv --x lon --y lat --crs 4326 --like " + dir +
                   "/city.map --out " + dir + "/bs.dtx",
               said);
  EXPECT_EQ(status, 1) << said;
  EXPECT_FALSE(fs::exists(dir + "/bs.dtx"));
}

TEST_F(GeoImport, SitesGoIntoThePlanAndThePlanComesBackAsGeoJson) {
  make_dem(dir + "/dem.tif", true);
  make_footprints(dir + "/fp.geojson", {});
  int status = 0;
  std::string said = import_terrain(dir + "/dem.tif", xmin, ymin, xmin + 500, ymin + 400, status);
  ASSERT_EQ(status, 0) << said;
  // Two sites and three users by longitude and latitude.
  std::ofstream(dir + "/sites.csv") << "id,lon,lat\n7,8.5071,47.3859\n9,8.5098,47.3870\n";
  std::ofstream(dir + "/users.csv") << "lon,lat\n8.5075,47.3861\n8.5090,47.3866\n8.5100,47.3865\n";
  for (const char* kind : {"sites --label id --csv sites.csv --out bs.dtx", "users --csv users.csv --out mu.drx"}) {
    status = run("cd " + dir + " && " + tool("celvane-import") + " " + kind + " --x lon --y lat --crs 4326 --like city.map", said);
    ASSERT_EQ(status, 0) << said;
  }
  GeoSidecar sidecar;
  std::string error;
  ASSERT_TRUE(sidecar.read(dir + "/bs.geo.json", error)) << error;
  std::ifstream stations(dir + "/bs.dtx");
  int number;
  double x, y;
  ASSERT_TRUE(stations >> number >> x >> y);
  EXPECT_EQ(number, 7);
  double ex = 8.5071, ey = 47.3859;
  transform(4326, 32632, ex, ey);
  EXPECT_NEAR(x, ex - sidecar.x0, 1e-3);
  EXPECT_NEAR(y, ey - sidecar.y0, 1e-3);

  std::ofstream(dir + "/plan.script") << "menu Set/Propagation parameters/Set model\nset Propagation model = Simple\n"
                                         "press Ok\nmenu File/Load terrain\nfile city.map\nmenu File/Load base stations\n"
                                         "file bs.dtx\nmenu File/Load mobile users\nfile mu.drx\n"
                                         "menu Run/Compute Assignment\nmenu File/Store assignment\nfile as.dat\nmenu Exit\n";
  status = run("cd " + dir + " && " + tool("celvane-batch") + " plan.script", said);
  ASSERT_EQ(status, 0) << said;
  ASSERT_NE(said.find("Assignment with all base stations found."), std::string::npos) << said;
  status = run("cd " + dir + " && " + tool("celvane-export") +
                   " plan --like city.map --tx bs.dtx --rx mu.drx --report as.dat --out plan.geojson --kml plan.kml",
               said);
  ASSERT_EQ(status, 0) << said;
  EXPECT_TRUE(fs::exists(dir + "/plan.kml"));

  GDALDatasetUniquePtr plan(GDALDataset::Open((dir + "/plan.geojson").c_str(), GDAL_OF_VECTOR));
  ASSERT_TRUE(plan);
  OGRLayer* layer = plan->GetLayer(0);
  ASSERT_EQ(layer->GetFeatureCount(), 5);
  int served = 0;
  for (auto& f : *layer) {
    const OGRPoint* p = f->GetGeometryRef()->toPoint();
    if (std::string(f->GetFieldAsString("kind")) == "base station" && f->GetFieldAsInteger("number") == 0) {
      EXPECT_EQ(std::string(f->GetFieldAsString("label")), "BS0007");
      EXPECT_NEAR(p->getX(), 8.5071, 1e-7);
      EXPECT_NEAR(p->getY(), 47.3859, 1e-7);
    }
    if (std::string(f->GetFieldAsString("kind")) == "mobile user") {
      const std::string server = f->GetFieldAsString("server");
      EXPECT_TRUE(server == "BS0007" || server == "BS0009") << server;
      ++served;
    }
  }
  EXPECT_EQ(served, 3);

  // The coverage round BS0009 as a GeoTIFF, against the map the program computes.
  status = run("cd " + dir + " && " + tool("celvane-export") +
                   " coverage --like city.map --tx bs.dtx --station BS0009 --radius 30 --out cov.tif",
               said);
  ASSERT_EQ(status, 0) << said;
  Trl_Planner p;
  p.visualization_radius = 30;
  p.terrain = new Trl_Terrain;
  p.terrain->load(tk::to_drive_path(dir + "/city.map"), [](const tk::string& s) { ADD_FAILURE() << s.str(); });
  std::ifstream again(dir + "/bs.dtx");
  tk::point low, high;
  ASSERT_TRUE(Trl_Tx::read_list(again, p.tx_template(), p.tx_list, low, high));
  Trl_CoverageRaster* expected = p.coverage_of(p.tx_list[p.tx_list.last()], true, nullptr);
  GDALDatasetUniquePtr tiff(GDALDataset::Open((dir + "/cov.tif").c_str(), GDAL_OF_RASTER));
  ASSERT_TRUE(tiff);
  ASSERT_EQ(tiff->GetRasterXSize(), 60);
  ASSERT_EQ(tiff->GetRasterYSize(), 60);
  double gt[6];
  tiff->GetGeoTransform(gt);
  const Trl_Grid& g = expected->grid;
  EXPECT_DOUBLE_EQ(gt[0], g.x0 - 2.5 + sidecar.x0);
  EXPECT_DOUBLE_EQ(gt[3], g.y1 + 2.5 + sidecar.y0);
  EXPECT_EQ(gt[1], 5);
  EXPECT_EQ(gt[5], -5);
  const OGRSpatialReference utm = system(32632);
  EXPECT_TRUE(tiff->GetSpatialRef()->IsSame(&utm));
  for (auto [c, r] : {std::pair{3, 4}, std::pair{30, 31}, std::pair{55, 12}}) {
    float value = 0;
    ASSERT_EQ(tiff->GetRasterBand(1)->RasterIO(GF_Read, c, 59 - r, 1, 1, &value, 1, 1, GDT_Float32, 0, 0), CE_None);
    EXPECT_NE(expected->value(c, r), 0) << c << "," << r;
    EXPECT_FLOAT_EQ(value, static_cast<float>(expected->value(c, r))) << c << "," << r;
  }
  expected->release();
}
