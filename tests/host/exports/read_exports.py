#!/usr/bin/env python3
"""read_exports.py FORMAT FILE: reads one exported file by the rules of its format, prints JSON.

FORMAT is gama, dynaml, gvx, sinex, starnet or csv. What is printed is the same for all:

    {"stations": [{"name", "xyz": [x, y, z], "held": true or false}],
     "vectors":  [{"id", "from", "to", "xyz": [dx, dy, dz], "cov": [xx, xy, xz, yy, yz, zz]}],
     "matrix":   [[...]]   SINEX: lower triangle of the positions' covariance, stations in order
     "text": ...}          everything that says where the numbers come from

in metres and square metres, earth-centred, earth-fixed. A rule that the file breaks ends the reading
with one line that names it."""
import csv
import io
import json
import re
import sys
import xml.etree.ElementTree as ElementTree


class Broken(Exception):
    pass


def rule(holds, what):
    if not holds:
        raise Broken(what)


def number(text):
    rule(re.fullmatch(r"\s*[-+]?(\d+\.?\d*|\.\d+)([eEdD][-+]?\d+)?\s*", text), f"no number: {text!r}")
    return float(text.replace("D", "E").replace("d", "e"))


def parsed(data):
    text = data.decode("utf-8")
    rule("<!DOCTYPE" not in text and "<![CDATA[" not in text, "DTD or CDATA")
    for entity in re.findall(r"&(#?\w+);", text):
        rule(entity in ("amp", "lt", "gt", "quot", "apos") or entity.startswith("#"), f"entity {entity}")
    return ElementTree.fromstring(data)


# --- gama-local XML: lengths in m, covariances in mm^2 by rows of the upper triangle

def read_gama(data):
    ns = "{http://www.gnu.org/software/gama/gama-local}"
    root = parsed(data)
    rule(root.tag == ns + "gama-local", "root element")
    network = root.find(ns + "network")
    rule(network.get("axes-xy") == "ne" and network.get("angles") == "left-handed", "axes")
    parameters = network.find(ns + "parameters")
    rule(number(parameters.get("sigma-apr")) == 1.0, "sigma-apr")
    rule(parameters.get("sigma-act") == "apriori", "sigma-act")
    body = network.find(ns + "points-observations")
    stations, vectors = [], []
    for point in body.findall(ns + "point"):
        rule(("fix" in point.attrib) != ("adj" in point.attrib), "a point is either fixed or adjusted")
        rule(point.get("fix", "xyz") == "xyz" and point.get("adj", "xyz") in ("xyz", "XYZ"), "use of a point")
        stations.append({"name": point.get("id"), "xyz": [number(point.get(k)) for k in "xyz"],
                         "held": "fix" in point.attrib})
    names = [s["name"] for s in stations]
    rule(len(set(names)) == len(names), "two points of one id")
    for group in body.findall(ns + "vectors"):
        members = group.findall(ns + "vec")
        matrix = group.find(ns + "cov-mat")
        dim, band = int(matrix.get("dim")), int(matrix.get("band"))
        rule(dim == 3 * len(members) and band == dim - 1, "size of cov-mat")
        values = [number(v) * 1e-6 for v in matrix.text.split()]
        rule(len(values) == dim * (dim + 1) // 2, "count of cov-mat")
        full = [[0.0] * dim for _ in range(dim)]
        place = iter(values)
        for i in range(dim):
            for j in range(i, dim):
                full[i][j] = full[j][i] = next(place)
        for k, vec in enumerate(members):
            rule(vec.get("from") in names and vec.get("to") in names, "vec of an unknown point")
            i = 3 * k
            vectors.append({"from": vec.get("from"), "to": vec.get("to"),
                            "xyz": [number(vec.get(a)) for a in ("dx", "dy", "dz")],
                            "cov": [full[i][i], full[i][i + 1], full[i][i + 2], full[i + 1][i + 1],
                                    full[i + 1][i + 2], full[i + 2][i + 2]]})
    return {"stations": stations, "vectors": vectors, "text": network.findtext(ns + "description")}


# --- DynaML: Sigma** are variances and covariances in m^2

def read_dynaml(data):
    root = parsed(data)
    rule(root.tag == "DnaXmlFormat", "root element")
    rule(root.get("type") in ("Station File", "Measurement File", "Combined File"), "type")
    rule(re.fullmatch(r"\d\d\.\d\d\.\d{4}", root.get("epoch")), "epoch")
    stations, vectors = [], []
    for station in root.findall("DnaStation"):
        rule([e.tag for e in station][:4] == ["Name", "Constraints", "Type", "StationCoord"], "order in a station")
        rule(station.findtext("Type") == "XYZ", "type of a station")
        rule(station.findtext("Constraints") in ("CCC", "FFF"), "constraints")
        at = station.find("StationCoord")
        rule([e.tag for e in at][:4] == ["Name", "XAxis", "YAxis", "Height"], "order in coordinates")
        name = station.findtext("Name")
        rule(0 < len(name) <= 20 and at.findtext("Name") == name, "name of a station")
        stations.append({"name": name, "held": station.findtext("Constraints") == "CCC",
                         "xyz": [number(at.findtext(k)) for k in ("XAxis", "YAxis", "Height")],
                         "description": station.findtext("Description")})
    names = [s["name"] for s in stations]
    rule(len(set(names)) == len(names), "two stations of one name")
    for measurement in root.findall("DnaMeasurement"):
        rule(measurement.findtext("Type") == "G", "type of a measurement")
        first, second = measurement.findtext("First"), measurement.findtext("Second")
        rule(first in names and second in names, "measurement of an unknown station")
        scales = [number(measurement.findtext(k)) for k in ("Vscale", "Pscale", "Lscale", "Hscale")]
        rule(scales == [1.0] * 4, "scales")
        rule(re.fullmatch(r"\d\d\.\d\d\.\d{4}", measurement.findtext("Epoch")), "epoch of a measurement")
        line = measurement.find("GPSBaseline")
        vectors.append({"from": first, "to": second, "ignored": measurement.findtext("Ignore") == "*",
                        "frame": measurement.findtext("ReferenceFrame"),
                        "epoch": measurement.findtext("Epoch"),
                        "xyz": [number(line.findtext(k)) for k in "XYZ"],
                        "cov": [number(line.findtext("Sigma" + k)) for k in ("XX", "XY", "XZ", "YY", "YZ", "ZZ")]})
    return {"stations": stations, "vectors": vectors, "frame": root.get("referenceframe"),
            "epoch": root.get("epoch"), "text": re.findall(r"<!--(.*?)-->", data.decode("utf-8"), re.S)}


# --- GVX: standard deviations in m and correlations

GVX_ORDER = ["SOURCE_DATA", "PROJECT_INFORMATION", "REFERENCE_SYSTEM", "EQUIPMENT", "SURVEY_SETUP", "POINT",
             "GNSS_VECTOR", "SESSION"]
GVX_REQUIRED = {
    "SOURCE_DATA": ["NAME", "CREATED_DATE", "APPLICATION/NAME", "APPLICATION/VERSION",
                    "CONVERTED_BY/SOFTWARE_NAME", "CONVERTED_BY/CONVERTED_DATE"],
    "PROJECT_INFORMATION": ["TITLE", "PARTY_CHIEF", "AGENCY", "START_DATE", "END_DATE"],
    "REFERENCE_SYSTEM": ["NAME", "LINEAR_UNIT/NAME"],
    "EQUIPMENT": ["RECEIVER/FIRMWARE_VERSION", "ANTENNA/TYPE", "ANTENNA/SERIAL_NUMBER"],
    "SURVEY_SETUP": ["SOLUTION_TYPE", "OPERATOR", "PROCESSING_SOFTWARE/NAME", "PROCESSING_SOFTWARE/VERSION"],
    "POINT": ["NAME", "EQUIPMENT_ID", "ARP_HEIGHT", "POINT_TYPE", "COORDINATES/REFERENCE_SYSTEM_ID",
              "COORDINATES/EPOCH", "COORDINATES/GEODETIC_COORDINATES/ELLIPSOIDAL_HEIGHT"],
    "GNSS_VECTOR": ["INITIAL_POINT_ID", "TERMINAL_POINT_ID", "SURVEY_SETUP_ID", "OBSERVATION_TIME/START",
                    "OBSERVATION_TIME/END", "QUALITY_CONTROL/ORBIT/TYPE", "QUALITY_CONTROL/ORBIT/SOURCE",
                    "ECEF_DELTAS/DX", "ECEF_DELTAS/DY", "ECEF_DELTAS/DZ"]
                   + ["CORRELATION_MATRIX/" + k for k in ("SDX", "SDY", "SDZ", "PXY", "PXZ", "PYZ")],
}


def identity(element):
    """An ID is an attribute or the first child; both are found in files."""
    value = element.get("ID", element.findtext("ID"))
    rule(value, f"{element.tag} without ID")
    return value


def read_gvx(data):
    root = parsed(data)
    rule(root.tag == "GVX" and root.get("VERSION") == "1.0", "root element")
    ranks = [GVX_ORDER.index(e.tag) for e in root]
    rule(ranks == sorted(ranks), "order of elements")
    for tag, paths in GVX_REQUIRED.items():
        found = root.findall(tag)
        rule(found, f"no {tag}")
        rule(tag not in ("SOURCE_DATA", "PROJECT_INFORMATION") or len(found) == 1, f"more than one {tag}")
        for element in found:
            for path in paths:
                rule((element.findtext(path) or "").strip(), f"{tag} without {path}")
    system = root.find("REFERENCE_SYSTEM")
    equipment = {identity(e) for e in root.findall("EQUIPMENT")}
    setups = {identity(e) for e in root.findall("SURVEY_SETUP")}
    points, stations, vectors = {}, [], []
    for point in root.findall("POINT"):
        rule(point.findtext("EQUIPMENT_ID") in equipment, "POINT of unknown equipment")
        at = point.find("COORDINATES")
        rule(at.findtext("REFERENCE_SYSTEM_ID") == identity(system), "reference system of a POINT")
        name = point.findtext("NAME")
        rule(identity(point) not in points, "two POINTs of one ID")
        points[identity(point)] = name
        stations.append({"name": name, "held": False,
                         "xyz": [number(at.findtext("GEOCENTRIC_COORDINATES/" + k)) for k in "XYZ"],
                         "geodetic": [number(at.findtext("GEODETIC_COORDINATES/" + k))
                                      for k in ("LATITUDE", "LONGITUDE", "ELLIPSOIDAL_HEIGHT")],
                         "epoch": number(at.findtext("EPOCH"))})
    for vector in root.findall("GNSS_VECTOR"):
        rule(vector.findtext("SURVEY_SETUP_ID") in setups, "vector of an unknown setup")
        sx, sy, sz, pxy, pxz, pyz = (number(vector.findtext("CORRELATION_MATRIX/" + k))
                                     for k in ("SDX", "SDY", "SDZ", "PXY", "PXZ", "PYZ"))
        rule(max(abs(pxy), abs(pxz), abs(pyz)) <= 1.0, "correlation above one")
        vectors.append({"id": identity(vector), "from": points[vector.findtext("INITIAL_POINT_ID")],
                        "to": points[vector.findtext("TERMINAL_POINT_ID")],
                        "xyz": [number(vector.findtext("ECEF_DELTAS/D" + k)) for k in "XYZ"],
                        "cov": [sx * sx, pxy * sx * sy, pxz * sx * sz, sy * sy, pyz * sy * sz, sz * sz],
                        "start": vector.findtext("OBSERVATION_TIME/START"),
                        "end": vector.findtext("OBSERVATION_TIME/END")})
    rule(len({v["id"] for v in vectors}) == len(vectors), "two vectors of one ID")
    return {"stations": stations, "vectors": vectors, "reference_system": identity(system),
            "text": root.findtext("PROJECT_INFORMATION/REMARK")}


# --- SINEX 2.02, by columns

TIME = r"\d\d:\d{3}:\d{5}"


def read_sinex(data):
    lines = data.decode("ascii").split("\n")
    rule(lines[-1] == "" and lines[-2] == "%ENDSNX", "last line")
    lines = lines[:-2]
    for line in lines:
        rule(len(line) <= 80, f"more than 80 columns: {line}")
        rule(line[:1] in ("%", "*", "+", "-", " "), f"first column: {line}")
    head = re.fullmatch(r"%%=SNX (\d\.\d\d) (...) (%s) (...) (%s) (%s) P (\d{5}) ([012]) S.*" % (TIME, TIME, TIME),
                        lines[0])
    rule(head, f"header: {lines[0]}")
    blocks, name = {}, None
    for line in lines[1:]:
        if line[0] == "+":
            rule(name is None, f"block in a block: {line}")
            name = line[1:].rstrip()
            rule(name not in blocks, f"two blocks {name}")
            blocks[name] = []
        elif line[0] == "-":
            rule(line[1:].rstrip() == name, f"end of another block: {line}")
            name = None
        elif line[0] == " ":
            rule(name is not None, f"line outside of blocks: {line}")
            blocks[name].append(line)
    rule(name is None, "block without end")

    sites, long_names = [], {}
    for line in blocks["SITE/ID"]:
        rule(re.fullmatch(r" [ 0-9A-Z]{4} [ A-Z0-9]{2} .{9} P .{22} [ \d]{3} [ \d]{2} [ .\d]{4} [- \d]{3} [ \d]{2}"
                          r" [ .\d]{4} [- .\d]{7}", line), f"SITE/ID: {line}")
        code = line[1:5]
        sites.append(code)
        long_names[code] = line[21:43].strip()
    rule(len(set(sites)) == len(sites), "two sites of one code")
    for line in blocks["SOLUTION/EPOCHS"]:
        rule(re.fullmatch(r" .{4} .{2} .{4} P %s %s %s" % (TIME, TIME, TIME), line), f"SOLUTION/EPOCHS: {line}")
    rule([line[1:5] for line in blocks["SOLUTION/EPOCHS"]] == sites, "sites of SOLUTION/EPOCHS")

    count, values, deviations = 0, {}, []
    constraints = {}
    for line in blocks["SOLUTION/ESTIMATE"]:
        count += 1
        index, kind, code = int(line[1:6]), line[7:13].strip(), line[14:18]
        rule(index == count, "index of an estimate")
        rule(kind in ("STAX", "STAY", "STAZ"), f"estimate {kind}")
        rule(re.fullmatch(TIME, line[27:39]), f"time of an estimate: {line}")
        rule(line[40:44].strip() == "m", "unit of an estimate")
        rule(line[45] in "012", "constraint of an estimate")
        values[(code, kind[3])] = number(line[47:68])
        constraints[code] = line[45]
        deviations.append(number(line[69:80]))
    rule(count == int(head.group(7)) == 3 * len(sites), "number of estimates")
    rule(list(values) == [(s, a) for s in sites for a in "XYZ"], "order of estimates")

    matrix = [[0.0] * count for _ in range(count)]
    for line in blocks["SOLUTION/MATRIX_ESTIMATE L COVA"]:
        row, column = int(line[1:6]), int(line[7:12])
        for k in range(3):
            text = line[13 + 22 * k:34 + 22 * k]
            if text.strip():
                rule(column + k <= row <= count, "upper triangle")
                matrix[row - 1][column + k - 1] = number(text)
    for i in range(count):
        rule(abs(matrix[i][i] ** 0.5 - deviations[i]) <= 1e-5 * deviations[i], "deviation and matrix differ")
    stations = [{"name": long_names[s], "code": s, "xyz": [values[(s, a)] for a in "XYZ"],
                 "held": constraints[s] == "0"} for s in sites]
    comments = [line for line in lines if line[0] == "*"]
    return {"stations": stations, "vectors": [], "matrix": [row[:i + 1] for i, row in enumerate(matrix)],
            "text": comments + blocks.get("FILE/REFERENCE", []) + blocks.get("FILE/COMMENT", [])}


# --- STAR*NET: variances xx yy zz, then covariances xy zx zy

def read_starnet(data):
    vectors, comments, at, weight = [], [], None, None
    for line in data.decode("utf-8").split("\n"):
        if not line.strip():
            continue
        if line.startswith("#"):
            comments.append(line[1:].strip())
            continue
        word, _, rest = line.partition(" ")
        if word == ".GPS":
            rule(rest.split() == ["WEIGHT", "COVARIANCE"], "weights")
            weight = rest
        elif word == "G0":
            rule(rest.startswith("'"), "G0 without quote")
            at = {"id": rest[1:].split()[0]}
        elif word == "G1":
            rule(weight, "vector before .GPS WEIGHT")
            fields = rest.split()
            rule(len(fields) == 4 and fields[0].count("-") == 1, f"G1: {line}")
            at["from"], at["to"] = fields[0].split("-")
            at["xyz"] = [number(f) for f in fields[1:]]
        elif word == "G2":
            at["variances"] = [number(f) for f in rest.split()]
            rule(len(at["variances"]) == 3, f"G2: {line}")
        elif word == "G3":
            xy, zx, zy = (number(f) for f in rest.split())
            xx, yy, zz = at.pop("variances")
            at["cov"] = [xx, xy, zx, yy, zy, zz]
            vectors.append(at)
            at = None
        else:
            raise Broken(f"unknown line: {line}")
    rule(at is None, "unfinished vector")
    return {"stations": [], "vectors": vectors, "text": comments}


# --- CSV: one line a vector

CSV_COLUMNS = ("from,to,session,start,end,dx,dy,dz,cxx,cxy,cxz,cyy,cyz,czz,kind,ratio,sigma_scale,residual_n,"
               "residual_e,residual_u,w,used").split(",")


def read_csv(data):
    rows = csv.reader(io.StringIO(data.decode("utf-8"), newline=""))
    header = next(rows)
    rule(header[:len(CSV_COLUMNS)] == CSV_COLUMNS, f"columns: {header}")
    vectors = []
    for row in rows:
        rule(len(row) == len(header), f"fields: {row}")
        record = dict(zip(header, row))
        vectors.append({**record, "xyz": [number(record["d" + k]) for k in "xyz"],
                        "cov": [number(record["c" + k]) for k in ("xx", "xy", "xz", "yy", "yz", "zz")]})
    return {"stations": [], "vectors": vectors}


READERS = {"gama": read_gama, "dynaml": read_dynaml, "gvx": read_gvx, "sinex": read_sinex,
           "starnet": read_starnet, "csv": read_csv}


def main():
    kind, path = sys.argv[1:]
    with open(path, "rb") as file:
        data = file.read()
    try:
        print(json.dumps(READERS[kind](data)))
    except (Broken, KeyError, ValueError, AttributeError, IndexError, TypeError,
            ElementTree.ParseError) as error:
        print(f"{path}: {type(error).__name__}: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
