#include "geo/PlanExport.h"

#include <gdal_priv.h>
#include <ogr_spatialref.h>
#include <ogrsf_frmts.h>

#include <fstream>
#include <memory>

#include "geo/AssignmentReport.h"
#include "geo/GeoSidecar.h"
#include "network/Trl_Rx.h"
#include "network/Trl_Tx.h"

namespace {

// One output file with one point layer in WGS 84.
class PointWriter {
 public:
  bool open(const char* driver, const std::string& path, std::string& error) {
    GDALDriver* d = GetGDALDriverManager()->GetDriverByName(driver);
    data.reset(d ? d->Create(path.c_str(), 0, 0, 0, GDT_Unknown, nullptr) : nullptr);
    OGRSpatialReference wgs84;
    wgs84.importFromEPSG(4326);
    wgs84.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);  // points are given as longitude, latitude
    char** options = std::string(driver) == "GeoJSON" ? CSLSetNameValue(nullptr, "RFC7946", "YES") : nullptr;
    layer = data ? data->CreateLayer("plan", &wgs84, wkbPoint, options) : nullptr;
    CSLDestroy(options);
    if (!layer) {
      error = "cannot write " + path;
      return false;
    }
    for (const char* name : {"kind", "label", "server"}) add_field(name, OFTString);
    add_field("number", OFTInteger);
    add_field("in_use", OFTInteger);
    for (const char* name : {"uplink_dbm", "downlink_dbm"}) add_field(name, OFTReal);
    return true;
  }

  OGRFeature* feature() { return OGRFeature::CreateFeature(layer->GetLayerDefn()); }

  bool add(OGRFeature* f, double lon, double lat) {
    OGRPoint point(lon, lat);
    f->SetGeometry(&point);
    const bool ok = layer->CreateFeature(f) == OGRERR_NONE;
    OGRFeature::DestroyFeature(f);
    return ok;
  }

 private:
  void add_field(const char* name, OGRFieldType type) {
    OGRFieldDefn field(name, type);
    layer->CreateField(&field);
  }
  GDALDatasetUniquePtr data;
  OGRLayer* layer = nullptr;
};

}  // namespace

bool PlanExport::run(std::string& error, std::ostream& note) {
  GDALAllRegister();
  GeoSidecar plan;
  if (!plan.read(GeoSidecar::path_for(like), error)) return false;
  const Trl_Tx tx_template(tk::d3_point(0, 0, 0), tk::string(""), -1, 20, 2, 1, 1, 1, 0.4, Trl_Tx::usable);
  const Trl_Rx rx_template(tk::d3_point(0, 0, 0), 1, 1, 1, 1, 1, 1, 1, 1, 12.2, 12.2, 0);
  tk::list<Trl_Tx> stations;
  tk::list<Trl_Rx> users;
  tk::point low, high;
  std::ifstream tx_in(tx_file);
  if (!tx_in || !Trl_Tx::read_list(tx_in, tx_template, stations, low, high)) {
    error = "cannot read base stations from " + tx_file;
    return false;
  }
  int ignored = 0;
  std::ifstream rx_in(rx_file);
  if (!rx_file.empty() && (!rx_in || !Trl_Rx::read_list(rx_in, rx_template, nullptr, users, low, high, ignored))) {
    error = "cannot read mobile users from " + rx_file;
    return false;
  }
  AssignmentReport assignment;
  std::ifstream report_in(report);
  if (!report.empty() && (!report_in || !assignment.read(report_in, error))) {
    if (error.empty()) error = "cannot read " + report;
    return false;
  }
  OGRSpatialReference crs, wgs84;
  crs.importFromWkt(plan.wkt.c_str());
  wgs84.importFromEPSG(4326);
  crs.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  wgs84.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  std::unique_ptr<OGRCoordinateTransformation> to_wgs84(OGRCreateCoordinateTransformation(&crs, &wgs84));
  std::vector<PointWriter> writers(kml.empty() ? 1 : 2);
  if (!to_wgs84 || !writers[0].open("GeoJSON", geojson, error) || (!kml.empty() && !writers[1].open("KML", kml, error)))
    return false;
  auto place = [&](const tk::d3_point& p, double& lon, double& lat) {
    lon = p.xcoord() + plan.x0;
    lat = p.ycoord() + plan.y0;
    return to_wgs84->Transform(1, &lon, &lat);
  };
  for (PointWriter& out : writers) {
    for (const Trl_Tx& tx : stations) {
      double lon, lat;
      if (!place(tx.position, lon, lat)) continue;
      OGRFeature* f = out.feature();
      f->SetField("kind", "base station");
      f->SetField("label", tx.label.cstring());
      f->SetField("number", tx.number);
      f->SetField("in_use", assignment.in_use.count(tx.label.str()) ? 1 : 0);
      out.add(f, lon, lat);
    }
    for (const Trl_Rx& rx : users) {
      double lon, lat;
      if (!place(rx.position, lon, lat)) continue;
      OGRFeature* f = out.feature();
      f->SetField("kind", "mobile user");
      f->SetField("number", rx.number);
      const auto link = assignment.users.find(rx.number);
      if (link != assignment.users.end()) {
        f->SetField("server", link->second.server.c_str());
        f->SetField("uplink_dbm", link->second.uplink_dbm);
        f->SetField("downlink_dbm", link->second.downlink_dbm);
      }
      out.add(f, lon, lat);
    }
  }
  note << "celvane-export: wrote " << stations.size() << " base stations and " << users.size() << " mobile users to "
       << geojson << (kml.empty() ? "" : " and " + kml) << "\n";
  return true;
}
