#include "geo/CoverageExport.h"

#include <gdal_priv.h>
#include <ogr_spatialref.h>

#include <cstdlib>
#include <fstream>
#include <vector>

#include "app/Trl_Planner.h"
#include "geo/GeoSidecar.h"
#include "raster/Trl_CoverageRaster.h"
#include "raster/Trl_Terrain.h"
#include "toolkit/directory.h"

namespace {

const Trl_Tx* find_station(const tk::list<Trl_Tx>& list, const std::string& wanted) {
  char* end = nullptr;
  const long position = std::strtol(wanted.c_str(), &end, 10);
  const bool by_position = !wanted.empty() && *end == '\0';
  for (const Trl_Tx& tx : list)
    if (by_position ? tx.number == position : tx.label.str() == wanted) return &tx;
  return nullptr;
}

// North-up: the raster's top row is its last row of the height grid.
bool write_tiff(const std::string& path, const Trl_CoverageRaster& raster, const GeoSidecar& plan) {
  const Trl_Grid& g = raster.grid;
  const int columns = static_cast<int>(g.nx), rows = static_cast<int>(g.ny);
  GDALDriver* tiff = GetGDALDriverManager()->GetDriverByName("GTiff");
  GDALDatasetUniquePtr d(tiff ? tiff->Create(path.c_str(), columns, rows, 1, GDT_Float32, nullptr) : nullptr);
  if (!d) return false;
  double gt[6] = {g.x0 - 0.5 * g.dx + plan.x0, g.dx, 0, g.y1 + 0.5 * g.dy + plan.y0, 0, -g.dy};
  d->SetGeoTransform(gt);
  OGRSpatialReference srs;
  srs.importFromWkt(plan.wkt.c_str());
  d->SetSpatialRef(&srs);
  GDALRasterBand* band = d->GetRasterBand(1);
  band->SetNoDataValue(0);
  band->SetDescription("path loss [dB]");
  std::vector<float> line(columns);
  for (int k = 0; k < rows; ++k) {
    for (int c = 0; c < columns; ++c) line[c] = static_cast<float>(raster.value(c, rows - 1 - k));
    if (band->RasterIO(GF_Write, 0, k, columns, 1, line.data(), columns, 1, GDT_Float32, 0, 0) != CE_None) return false;
  }
  return true;
}

}  // namespace

bool CoverageExport::run(std::string& error, std::ostream& note) {
  GDALAllRegister();
  GeoSidecar plan;
  if (!plan.read(GeoSidecar::path_for(like), error)) return false;
  Trl_Planner planner;
  planner.visualization_radius = radius;
  planner.terrain = new Trl_Terrain;
  planner.terrain->load(tk::to_drive_path(like), [&error](const tk::string& text) { error = text.str(); });
  if (!planner.terrain->loaded()) {
    error = "cannot read the terrain " + like + (error.empty() ? "" : ": " + error);
    return false;
  }
  std::ifstream in(tx_file);
  tk::point low, high;
  if (!in || !Trl_Tx::read_list(in, planner.tx_template(), planner.tx_list, low, high)) {
    error = "cannot read base stations from " + tx_file;
    return false;
  }
  const Trl_Tx* tx = find_station(planner.tx_list, station);
  if (!tx) {
    error = tx_file + " has no base station " + station;
    return false;
  }
  if (!planner.terrain->contains(tx->position.to_point())) {
    error = "base station " + station + " stands outside the terrain";
    return false;
  }
  Trl_CoverageRaster* raster = planner.coverage_of(*tx, in_buildings, nullptr);
  const bool written = write_tiff(out + ".part", *raster, plan) && std::rename((out + ".part").c_str(), out.c_str()) == 0;
  raster->release();
  if (!written) {
    std::remove((out + ".part").c_str());
    error = "cannot write " + out;
    return false;
  }
  note << "celvane-export: wrote the path loss round " << tx->label.str() << " to " << out << "\n";
  return true;
}
