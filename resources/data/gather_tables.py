#!/usr/bin/env python3
"""Generates cameras.txt and lensid.txt, next to this script, from facts in Debian packages.

    apt-get install liblensfun-data-v1 libimage-exiftool-perl
    apt-get source --download-only colmap && tar xzf colmap_*.orig.tar.gz
    ./gather_tables.py --colmap colmap-*/src/util/camera_specs.cc

Only names and numbers are used: crop factors, sensor widths, lens numbers, focal lengths, apertures. The tables are
kept in the repository, so builds don't need these packages.
"""
import argparse
import glob
import html
import math
import pathlib
import re
import xml.etree.ElementTree as ElementTree

FRAME_DIAGONAL_MM = math.hypot(36.0, 24.0)

# Canonical names of makers: the part that all spellings of a maker share. The first match counts.
BRANDS = ['Canon', 'Nikon', 'Sony', 'Panasonic', 'Fuji', 'Pentax', 'Olympus', 'OM Digital', 'Samsung', 'Minolta',
          'Konica', 'Leica', 'Ricoh', 'Casio', 'Kodak', 'Sigma', 'Hasselblad', 'Epson']

# Rows with values from other sources: brand, model, scale, comment.
KNOWN_CAMERAS = [
    ('Apple', 'iPhone 7', '6.9', ''),
    ('Apple', 'iPhone', '5.9', ''),
    ('Autel Robotics Co., Ltd.', 'XB004', '5.3125', ''),
    ('Eyedeas', 'S1', '5.648', 'panoramic camera: each of its lenses'),
    # Cameras missing from the sources, with names that contain that of another camera. Sensor sizes in mm, from their
    # makers, in the order of the rows: 22.3 x 14.8 (R7), 22.3 x 14.9 (R10, R50, R100), 36 x 24, 43.8 x 32.9, 23.5 x 15.5,
    # 26.6 x 17.9; as in the P1000 (P1100), FZ300 (FZ330) and FZ1000 (FZ2000, FZ2500); 6.17 x 4.55.
    ('Canon', 'Canon EOS R7', '1.617', ''),
    ('Canon', 'Canon EOS R10', '1.613', ''),
    ('Canon', 'Canon EOS R50', '1.613', ''),
    ('Canon', 'Canon EOS R100', '1.613', ''),
    ('Canon', 'Canon EOS-1D C', '1', ''),
    ('Fuji', 'GFX100S', '0.79', ''),
    *(('Sigma', f'dp{i} Quattro', '1.537', '') for i in range(4)),
    ('Sigma', 'sd Quattro H', '1.35', ''),
    ('Nikon', 'COOLPIX P1100', '5.56', ''),
    ('Panasonic', 'DMC-FZ330', '5.56', ''),
    *(('Panasonic', f'DMC-FZ{number}', '2.73', '') for number in (2000, 2500)),
    *(('Nikon', f'COOLPIX A{number}', '5.64', '') for number in (10, 300, 900)),
]

# Rows from other sources, which override rows of the main sources with the same identifier.
KNOWN_LENSES = [
    ('8 8 121 3.6 3.6', 'Nikon', 'Sigma 8mm f/3.5 EX Circular Fisheye', '1'),
    ('4.5 4.5 254 2.8 2.8', 'Nikon', 'Sigma 4.5mm f/2.8 EX DC CIRCULAR FISHEYE HSM', '1'),
    ('10 22 235', 'Canon', 'Canon EF-S 10-22mm f/3.5-4.5 USM', '0'),
    ('10 20', 'Canon', 'Sigma 10-20mm f/4-5,6 USM', '0'),
    ('8 15 490', 'Canon', 'Canon EF 8-15mm f/4.0 L USM', '1'),
]


def spelled(tail):
    """Spells the tail of a name as cameras do, with a space before suffixes: 'sx40is' -> 'SX40 IS'."""
    apart = re.sub(r'(?<=\d)(is|hs|ti|zoom)$', r' \1', tail).upper()
    return re.sub(r'^(G\d)X', r'\1 X', apart).replace('MARKII', ' Mark II').replace(' ZOOM', '')


# colmap's names are in lowercase, without spaces and dashes. Per maker: patterns of such names, and the camera's
# spellings; {0} is the tail of the name. Names that match no pattern get no row.
SPELLINGS = {
    'canon': ('Canon', [(r'powershot(a\d+\D*)', ['{0}']), (r'powershot(.+)', ['PowerShot {0}']),
                        (r'digitalixus(.+)', ['DIGITAL IXUS {0}']), (r'ixus(.+)', ['IXUS {0}'])]),
    'nikon': ('Nikon', [(r'coolpix(\d+)', ['E{0}', 'COOLPIX {0}']), (r'coolpix(.+)', ['COOLPIX {0}'])]),
    'sony': ('Sony', [(r'cybershotdsc(.+)', ['DSC-{0}'])]),
    'fujifilm': ('Fuji', [(r'finepix(\d+)(?:zoom|z)?', ['FinePix{0}', 'FinePix {0}']),
                          (r'finepix(.+?)(?:zoom|fd|exr)?', ['FinePix {0}'])]),
    'panasonic': ('Panasonic', [(r'lumixdmc(.+)', ['DMC-{0}']), (r'pv(dc\d+)', ['PV-{0}'])]),
    'olympus': ('Olympus', [(r'([cd]\d+)(?:ultrazoom|zoom|z|l|r)?', ['{0}']), (r'(fe\d+|ir\d+|vg\d+)', ['{0}']),
                            (r'(sp)(\d+(?:uz)?)', ['SP{1}', 'SP-{1}']), (r'stylus(\d{3,4})', ['S{0}']),
                            (r'(?:tough)?(tg)(\d+)(?:ihs)?', ['TG-{1}']), (r'(sz|sh|xz)(\d+)(?:mr)?', ['{0}-{1}'])]),
    'samsung': ('Samsung', [(r'digimax(.+)', ['Digimax {0}']), (r'([a-z]{1,3}\d{2,}[a-z]{0,2})', ['{0}'])]),
    'casio': ('Casio', [(r'(?:exilim)?qvr(.+)', ['QV-R{0}']), (r'(?:exilim)?qv(.+)', ['QV-{0}']),
                        (r'(?:exilim)?ex(.+)', ['EX-{0}'])]),
    'pentax': ('Pentax', [(r'optiowg(\d.*)', ['Optio WG-{0}']), (r'optio(.+)', ['Optio {0}'])]),
    'kodak': ('Kodak', [(r'easyshare([a-z]+\d+.*)', ['{0}']), (r'(d[cx]\d+)', ['{0}']),
                        (r'pixpro(.+)', ['PIXPRO {0}'])]),
    'hp': ('Hewlett', [(r'photosmart(.+)', ['PhotoSmart {0}'])]),
    'ricoh': ('Ricoh', [(r'caplio(.+)', ['Caplio {0}']), (r'(cx\d|g\d00|gx\d00)', ['{0}']), (r'rdc(\d+)', ['RDC-{0}']),
                        (r'wg(\d+)', ['WG-{0}'])]),
    'konica-minolta': ('Minolta', [(r'dimage(.+)', ['DiMAGE {0}'])]),
    'minolta': ('Minolta', [(r'dimage(.+)', ['DiMAGE {0}'])]),
    'konica': ('Konica', [(r'revio(kd)(\d+z?)', ['KD-{1}'])]),
    'leica': ('Leica', [(r'([cdv])lux(\d+)', ['{0}-LUX {1}']), (r'digilux(\d)', ['DIGILUX {0}'])]),
    'sanyo': ('Sanyo', [(r'(?:xacti)?vpc([a-z]+\d+)', ['{0}'])]),
    'ge': ('General Imaging', [(r'([a-z]\d{3,}[a-z]*)', ['{0}'])]),
    'benq': ('BenQ', [(r'dc([a-z]\d+)', ['DC {0}'])]),
    'toshiba': ('Toshiba', [(r'pdr(m?\d+)', ['PDR-{0}', 'PDR{0}'])]),
    'agfaphoto': ('Agfa', [(r'dc(\d.+)', ['DC-{0}'])]),
    'vivitar': ('Vivitar', [(r'vivicam(\d.+)', ['ViviCam {0}'])]),
    'epson': ('Epson', [(r'photopc(\d+)(?:zoom)?', ['PhotoPC {0}'])]),
}


def diagonal_of_width(width_mm):
    """Returns the diagonal for a width: 3:2 from APS-C to full frame and for the 1-inch type, 4:3 for all others."""
    three_to_two = 21.0 <= width_mm <= 37.0 or 13.0 <= width_mm <= 13.3
    return width_mm * (math.hypot(3, 2) / 3 if three_to_two else math.hypot(4, 3) / 4)


def brand_of(maker):
    for brand in BRANDS:
        if brand.lower() in maker.lower():
            return brand
    return maker.split()[0]


def lensfun_cameras(folder):
    for file in sorted(glob.glob(f'{folder}/*.xml')):
        for camera in ElementTree.parse(file).getroot().iter('camera'):
            maker, model, crop = (camera.findtext(tag, '').strip() for tag in ('maker', 'model', 'cropfactor'))
            if maker and model and crop and maker != 'Generic' and '(' not in model:  # parentheses: notes by lensfun
                yield brand_of(maker), model, float(crop)


def colmap_cameras(file):
    maker = ''
    for line in open(file, encoding='utf-8'):
        if found := re.search(r'specs\["([^"]+)"\]', line):
            maker = found.group(1)
        for name, width in re.findall(r'emplace_back\("([^"]+)",\s*([\d.]+)f\)', line):
            brand, rules = SPELLINGS.get(maker, ('', []))
            for pattern, forms in rules:
                if match := re.fullmatch(pattern, name):
                    names = [form.format(*map(spelled, match.groups())) for form in forms]
                    scale = FRAME_DIAGONAL_MM / diagonal_of_width(float(width))
                    yield from ((brand, model, scale) for model in names if len(model) > 2)  # shorter ones match other cameras
                    break


def camera_rows(lensfun, colmap):
    """Returns one row per name, from the first source that has it."""
    rows, taken = [], set()

    def add(brand, model, scale, comment=''):
        key = brand.lower(), model.lower()
        if key not in taken and not set(';#') & set(brand + model):
            taken.add(key)
            rows.append((brand, model, scale, comment))

    for row in KNOWN_CAMERAS:
        add(*row)
    for brand, model, scale in [*lensfun_cameras(lensfun), *colmap_cameras(colmap)]:
        add(brand, model, f'{scale:.4g}')
    return sorted(rows, key=lambda row: (row[0].lower(), -len(row[1]), row[1].lower()))


def exiftool_values(file, anchor):
    """Yields the pairs (value, meaning) of one table of the documentation."""
    text = pathlib.Path(file).read_text(encoding='utf-8')
    table = text[text.index(f"<a name='{anchor}'>"):]
    table = table[:table.index('</table>')]
    for value, meaning in re.findall(r'<td>([^<]*)</td><td>= (.*?)</td>', table, re.S):
        yield html.unescape(value).strip("'"), html.unescape(re.sub('<[^>]*>', '', meaning)).strip()


def lens_type(name):
    if re.search(r'fish-?\s?eye|10\.5mm f/2\.8G', name, re.I):
        return '1'
    return '2' if re.search(r'\bTS-E\b|\bPC(-E)?\b|tilt', name, re.I) else '0'


def decimals(number):
    return f'{number:.9g}'


def nikon_lenses(file):
    """Yields identifiers and names. Cameras store focal lengths and f-numbers in steps of 1/24 of a doubling; identifiers
    have whole millimeters, and tenths of f-numbers."""
    for value, name in exiftool_values(file, 'LensID'):
        raw = re.findall(r'[0-9A-F]{2}', value.split('.')[0])
        if len(raw) != 8 or raw[1:6] == ['00'] * 5 or 'mm' not in name:
            continue
        number, _, shortest, longest, *apertures = (int(byte, 16) for byte in raw[:6])
        focal = [decimals(math.floor(5 * 2 ** (mm / 24) + 0.5)) for mm in (shortest, longest)]
        stops = [decimals(math.floor(10 * 2 ** (stop / 24) + 0.5) / 10) for stop in apertures]
        yield ' '.join([*focal, str(number), *stops]), re.sub(r'^(?=AF|Nikkor|PC|IX|Micro|Zoom)', 'Nikon ', name)


def canon_lenses(file):
    for value, name in exiftool_values(file, 'LensType'):
        name = re.sub(r' or .*', '', name)
        focal = re.search(r'(\d+(?:\.\d+)?)(?:-(\d+(?:\.\d+)?))?mm', name)
        number = value.split('.')[0]
        if focal and '+' not in name and number not in ('-1', '65535'):  # a converter changes the focal lengths
            yield f'{focal[1]} {focal[2] or focal[1]} {number}', name


def family(name):
    """Returns the maker and focal length, by which profiles are found."""
    return name.split()[0].lower(), [word for word in name.split() if 'mm' in word.lower()][-1].lower()


def lens_rows(nikon, canon):
    """Merges names with the same identifier, maker and focal length, because the lookup needs a unique row."""
    grouped = {}
    known = {row[0] for row in KNOWN_LENSES}
    for brand, lenses in (('Nikon', nikon_lenses(nikon)), ('Canon', canon_lenses(canon))):
        for identifier, name in lenses:
            name = name.replace(';', ',').replace('#', '')
            if identifier not in known:
                names = grouped.setdefault((brand, identifier, family(name)), [])
                if name not in names:
                    names.append(name)
    rows = list(KNOWN_LENSES)
    rows += [(identifier, brand, ', '.join(names), lens_type(' '.join(names)))
             for (brand, identifier, _), names in grouped.items()]
    return sorted(rows, key=lambda row: (row[1] != 'Nikon', [float(part) for part in row[0].split()], row[2]))


def write(file, head, rows, brand_cell):
    """Writes a table. Each row is a pair of its cells and a comment."""
    lines = [f'# {line}'.rstrip() for line in head]
    brand = None
    for cells, comment in rows:
        if cells[brand_cell] != brand:
            brand = cells[brand_cell]
            lines += ['', f'# {brand}']
        lines.append(';'.join(cells) + (f'   # {comment}' if comment else ''))
    file.write_text('\n'.join(lines) + '\n', encoding='utf-8')


CAMERAS_HEAD = [
    'Cameras and the scale of their sensors. Generated by gather_tables.py: edit that script instead.', '',
    'Cells, separated by ";":  1 brand   2 model   3 scale: diagonal of 36 x 24 mm divided by that of the sensor',
    'A row matches a picture whose maker contains cell 1 and whose model contains cell 2, ignoring case. The first match',
    'counts, so a longer name comes before a shorter one that it contains: A400 before A40.', '',
    'Sources: crop factors of the package liblensfun-data-v1; sensor widths of the source package colmap, with heights',
    'of 2/3 of the width from APS-C to full frame and for the 1-inch type, else 3/4; a few rows of the script.']
LENSES_HEAD = [
    'Lens identifiers of Nikon and Canon. Generated by gather_tables.py: edit that script instead.', '',
    'Cells, separated by ";":  1 identifier   2 brand   3 long name   4 type: 0 standard, 1 fisheye, 2 tilt/shift',
    'Nikon: shortest and longest focal length in mm, lens number, f-numbers at both ends, as the camera stores them.',
    'Canon: shortest and longest focal length in mm, lens number; the number may be missing.',
    'Lenses that share identifier, maker and focal length share a row.', '',
    'Sources: the lists of lens numbers in the documentation of the package libimage-exiftool-perl; a few rows of the',
    'script.']


def main():
    here = pathlib.Path(__file__).resolve().parent
    tags = '/usr/share/doc/libimage-exiftool-perl/html/TagNames'
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument('--lensfun', default='/usr/share/lensfun/version_1', help="folder of lensfun's database")
    parser.add_argument('--exiftool', default=tags, help="folder of exiftool's tag documentation")
    parser.add_argument('--colmap', required=True, help="colmap's camera_specs.cc")
    options = parser.parse_args()
    cameras = camera_rows(options.lensfun, options.colmap)
    lenses = lens_rows(f'{options.exiftool}/Nikon.html', f'{options.exiftool}/Canon.html')
    write(here / 'cameras.txt', CAMERAS_HEAD, [(row[:3], row[3]) for row in cameras], brand_cell=0)
    write(here / 'lensid.txt', LENSES_HEAD, [(row, '') for row in lenses], brand_cell=1)
    print(f'{len(cameras)} cameras, {len(lenses)} lenses')


if __name__ == '__main__':
    main()
