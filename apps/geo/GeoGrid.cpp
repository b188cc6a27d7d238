#include "geo/GeoGrid.h"

#include <cpl_string.h>
#include <gdal_alg.h>
#include <gdal_priv.h>
#include <gdal_utils.h>
#include <ogrsf_frmts.h>

#include <memory>

GeoGrid::GeoGrid(const OGRSpatialReference& srs, double xmin, double ymin, double cell, int columns, int rows)
    : srs(srs), xmin(xmin), ymin(ymin), cell(cell), columns(columns), rows(rows) {}

void GeoGrid::geotransform(double gt[6]) const {
  gt[0] = xmin;
  gt[1] = cell;
  gt[2] = 0;
  gt[3] = ymin + rows * cell;
  gt[4] = 0;
  gt[5] = -cell;
}

bool GeoGrid::warp(GDALDataset& raster, std::vector<double>& values, std::string& error) const {
  char* wkt = nullptr;
  srs.exportToWkt(&wkt);
  CPLStringList args;
  args.AddString("-of");
  args.AddString("MEM");
  args.AddString("-t_srs");
  args.AddString(wkt);
  CPLFree(wkt);
  args.AddString("-te");
  for (double v : {xmin, ymin, xmin + columns * cell, ymin + rows * cell}) args.AddString(CPLSPrintf("%.17g", v));
  args.AddString("-ts");
  args.AddString(CPLSPrintf("%d", columns));
  args.AddString(CPLSPrintf("%d", rows));
  args.AddString("-r");
  args.AddString("bilinear");
  args.AddString("-dstnodata");
  args.AddString(CPLSPrintf("%.17g", no_data));
  args.AddString("-ot");
  args.AddString("Float64");
  GDALWarpAppOptions* options = GDALWarpAppOptionsNew(args.List(), nullptr);
  GDALDatasetH source = GDALDataset::ToHandle(&raster);
  int usage_error = 0;
  GDALDatasetUniquePtr out(GDALDataset::FromHandle(GDALWarp("", nullptr, 1, &source, options, &usage_error)));
  GDALWarpAppOptionsFree(options);
  if (!out) {
    error = std::string("cannot resample the raster: ") + CPLGetLastErrorMsg();
    return false;
  }
  values.assign(static_cast<size_t>(columns) * rows, no_data);
  if (out->GetRasterBand(1)->RasterIO(GF_Read, 0, 0, columns, rows, values.data(), columns, rows, GDT_Float64, 0, 0) !=
      CE_None) {
    error = "cannot read the resampled raster";
    return false;
  }
  return true;
}

bool GeoGrid::rasterise(OGRLayer& layer, const std::string& field, std::vector<double>& values,
                        std::string& error) const {
  GDALDriver* memory = GetGDALDriverManager()->GetDriverByName("MEM");
  GDALDatasetUniquePtr target(memory->Create("", columns, rows, 1, GDT_Float64, nullptr));
  double gt[6];
  geotransform(gt);
  target->SetGeoTransform(gt);
  target->SetSpatialRef(&srs);
  int band = 1;
  double one = 1;
  char** options = field.empty() ? nullptr : CSLSetNameValue(nullptr, "ATTRIBUTE", field.c_str());
  OGRLayerH layers[] = {OGRLayer::ToHandle(&layer)};
  // Without a transformer GDAL takes each feature from the layer's system into the grid's.
  const CPLErr done = GDALRasterizeLayers(GDALDataset::ToHandle(target.get()), 1, &band, 1, layers, nullptr, nullptr,
                                          field.empty() ? &one : nullptr, options, nullptr, nullptr);
  CSLDestroy(options);
  values.assign(static_cast<size_t>(columns) * rows, 0);
  if (done != CE_None ||
      target->GetRasterBand(1)->RasterIO(GF_Read, 0, 0, columns, rows, values.data(), columns, rows, GDT_Float64, 0,
                                         0) != CE_None) {
    error = std::string("cannot rasterise the footprints: ") + CPLGetLastErrorMsg();
    return false;
  }
  return true;
}
