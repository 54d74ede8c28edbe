#!/usr/bin/env python3
"""Draws the configurator's icons as SVG and rasterises them into resources/images.

Run from anywhere: python3 tools/icons/make-icons.py
Needs rsvg-convert (librsvg2-bin) and ImageMagick's convert (/usr/bin/convert) for the spinner.
The SVG sources are kept next to the PNGs in resources/images/svg so that a change of colour
or size only means editing this script and running it again.
"""
import math
import os
import shutil
import subprocess
import tempfile

ROOT = os.path.abspath(os.path.join(os.path.dirname(__file__), "..", ".."))
OUT = os.path.join(ROOT, "resources", "images")
SVG_OUT = os.path.join(OUT, "svg")
CONVERT = "/usr/bin/convert"

GREEN = "#2e9d4a"
RED = "#d0352b"
GREY = "#7b8794"
DARK = "#33404d"
BLUE = "#2f74c0"
AMBER = "#f2b400"
WHITE = "#ffffff"


def svg(body, size=32):
    return ('<svg xmlns="http://www.w3.org/2000/svg" width="%d" height="%d" viewBox="0 0 32 32">\n'
            '%s\n</svg>\n' % (size, size, body))


# --- connection type: a USB plug (local) and a globe (remote) -----------------------------------

def usb_plug(colour):
    return ('<g fill="none" stroke="%s" stroke-width="2" stroke-linecap="round" stroke-linejoin="round">'
            '<rect x="10" y="3" width="12" height="9" rx="1.5"/>'
            '<line x1="14" y1="6" x2="14" y2="8"/><line x1="18" y1="6" x2="18" y2="8"/>'
            '<path d="M8 12 h16 v7 a5 5 0 0 1 -5 5 h-6 a5 5 0 0 1 -5 -5 z" fill="%s" fill-opacity="0.25"/>'
            '<line x1="16" y1="24" x2="16" y2="30"/></g>' % (colour, colour))


def globe(colour):
    return ('<g fill="none" stroke="%s" stroke-width="2">'
            '<circle cx="16" cy="16" r="12" fill="%s" fill-opacity="0.2"/>'
            '<ellipse cx="16" cy="16" rx="5" ry="12"/>'
            '<line x1="4" y1="16" x2="28" y2="16"/>'
            '<path d="M6 9 h20 M6 23 h20" stroke-width="1.5"/></g>' % (colour, colour))


def badge(colour, symbol):
    """A small round mark in the lower right corner: a tick for on, a cross for off."""
    mark = {
        "tick": '<path d="M22 25 l2.5 2.5 l4.5 -5" stroke="white" stroke-width="2" fill="none" '
                'stroke-linecap="round" stroke-linejoin="round"/>',
        "cross": '<path d="M22.5 22.5 l5 5 M27.5 22.5 l-5 5" stroke="white" stroke-width="2" '
                 'stroke-linecap="round"/>',
    }[symbol]
    return '<circle cx="25" cy="25" r="6.5" fill="%s" stroke="white" stroke-width="1"/>%s' % (colour, mark)


# --- state lamps ----------------------------------------------------------------------------------

def lamp(colour, light):
    return ('<defs><radialGradient id="g" cx="40%%" cy="35%%" r="65%%">'
            '<stop offset="0" stop-color="%s"/><stop offset="1" stop-color="%s"/></radialGradient></defs>'
            '<circle cx="16" cy="16" r="11" fill="url(#g)" stroke="%s" stroke-width="1.5"/>'
            '<ellipse cx="13" cy="11.5" rx="4" ry="2.5" fill="white" fill-opacity="0.45"/>'
            % (light, colour, DARK))


# --- telemetry icons ------------------------------------------------------------------------------

CLOUD = ('M9 25 a6 6 0 0 1 -0.5 -12 a8 8 0 0 1 15.3 -1.8 a5.5 5.5 0 0 1 0.7 13.8 z')


def cloud(colour, inner):
    return ('<path d="%s" fill="%s" fill-opacity="0.2" stroke="%s" stroke-width="2" stroke-linejoin="round"/>'
            '<g stroke="%s" stroke-width="2.2" fill="none" stroke-linecap="round" '
            'stroke-linejoin="round">%s</g>' % (CLOUD, colour, colour, colour, inner))


def satellite(colour):
    # Drawn level, then turned by 45 degrees: a body with two solar panels and a signal arc.
    return ('<g fill="none" stroke="%s" stroke-width="2" stroke-linejoin="round" transform="rotate(-45 16 16)">'
            '<rect x="12" y="11" width="8" height="10" rx="1" fill="%s" fill-opacity="0.35"/>'
            '<rect x="1.5" y="12.5" width="8" height="7"/><line x1="5.5" y1="12.5" x2="5.5" y2="19.5"/>'
            '<rect x="22.5" y="12.5" width="8" height="7"/><line x1="26.5" y1="12.5" x2="26.5" y2="19.5"/>'
            '<line x1="9.5" y1="16" x2="12" y2="16"/><line x1="20" y1="16" x2="22.5" y2="16"/>'
            '<path d="M12 25 a5 5 0 0 0 8 0 M10 28.5 a8.5 8.5 0 0 0 12 0" stroke-linecap="round"/></g>'
            % (colour, colour))


def light_bulb(colour, glow):
    return ('<g fill="none" stroke="%s" stroke-width="2" stroke-linejoin="round" stroke-linecap="round">'
            '<path d="M11 21 c0 -4 -4 -5 -4 -10 a9 9 0 0 1 18 0 c0 5 -4 6 -4 10 z" fill="%s" fill-opacity="%s"/>'
            '<line x1="12" y1="24.5" x2="20" y2="24.5"/><line x1="13" y1="28" x2="19" y2="28"/>'
            '<path d="M13 16 l3 -3 l3 3" stroke-width="1.5"/></g>'
            % (colour, glow, "0.9" if glow != "none" else "0"))


SIM = 'M8 3 h12 l6 6 v18 a2 2 0 0 1 -2 2 h-16 a2 2 0 0 1 -2 -2 v-22 a2 2 0 0 1 2 -2 z'


def sim_card(colour, chip, chip_fill, extra=""):
    return ('<path d="%s" fill="%s" fill-opacity="0.15" stroke="%s" stroke-width="2" stroke-linejoin="round"/>'
            '<rect x="10" y="13" width="12" height="11" rx="1.5" fill="%s" stroke="%s" stroke-width="1.5"/>'
            '<path d="M10 18.5 h12 M16 13 v4 M16 20 v4" stroke="%s" stroke-width="1"/>%s'
            % (SIM, colour, colour, chip_fill, chip, chip, extra))


# --- application and toolbar icons ----------------------------------------------------------------

def app_icon():
    # A tracker box with a location pin and a gear: the program configures a positioning device.
    return ('<defs><linearGradient id="bg" x1="0" y1="0" x2="0" y2="1">'
            '<stop offset="0" stop-color="#3b8ad9"/><stop offset="1" stop-color="#1d4f8c"/></linearGradient></defs>'
            '<rect x="1.5" y="1.5" width="29" height="29" rx="6" fill="url(#bg)"/>'
            '<path d="M16 5 a7 7 0 0 1 7 7 c0 5 -7 13 -7 13 c0 0 -7 -8 -7 -13 a7 7 0 0 1 7 -7 z" fill="white"/>'
            '<circle cx="16" cy="12" r="3" fill="#1d4f8c"/>'
            '<path d="M6 27 h20" stroke="white" stroke-width="2" stroke-linecap="round" stroke-opacity="0.8"/>')


def arrow_doc(direction):
    arrow = ('<path d="M16 9 v12 M11 16 l5 5 l5 -5"/>' if direction == "down"
             else '<path d="M16 21 v-12 M11 14 l5 -5 l5 5"/>')
    return ('<rect x="4" y="4" width="24" height="24" rx="3" fill="%s" fill-opacity="0.15" stroke="%s" '
            'stroke-width="2"/><g stroke="%s" stroke-width="2.5" fill="none" stroke-linecap="round" '
            'stroke-linejoin="round">%s</g>' % (BLUE, BLUE, BLUE, arrow))


def gear(colour):
    teeth = "".join('<rect x="14" y="2" width="4" height="6" rx="1" fill="%s" transform="rotate(%d 16 16)"/>'
                    % (colour, a) for a in range(0, 360, 45))
    return ('%s<circle cx="16" cy="16" r="9" fill="%s"/><circle cx="16" cy="16" r="4" fill="white"/>'
            % (teeth, colour))


def document(colour, inner=""):
    return ('<path d="M7 3 h12 l6 6 v19 a1 1 0 0 1 -1 1 h-17 a1 1 0 0 1 -1 -1 v-24 a1 1 0 0 1 1 -1 z" '
            'fill="white" stroke="%s" stroke-width="2" stroke-linejoin="round"/>'
            '<path d="M19 3 v6 h6" fill="none" stroke="%s" stroke-width="2" stroke-linejoin="round"/>%s'
            % (colour, colour, inner))


def folder(colour):
    return ('<path d="M3 8 a2 2 0 0 1 2 -2 h7 l3 3 h12 a2 2 0 0 1 2 2 v14 a2 2 0 0 1 -2 2 h-22 '
            'a2 2 0 0 1 -2 -2 z" fill="%s" fill-opacity="0.3" stroke="%s" stroke-width="2" '
            'stroke-linejoin="round"/>' % (colour, colour))


def floppy(colour):
    return ('<path d="M5 4 h18 l4 4 v19 a1 1 0 0 1 -1 1 h-21 a1 1 0 0 1 -1 -1 v-22 a1 1 0 0 1 1 -1 z" '
            'fill="%s" fill-opacity="0.2" stroke="%s" stroke-width="2" stroke-linejoin="round"/>'
            '<rect x="9" y="4" width="12" height="7" fill="none" stroke="%s" stroke-width="2"/>'
            '<rect x="9" y="17" width="14" height="8" rx="1" fill="white" stroke="%s" stroke-width="1.5"/>'
            % (colour, colour, colour, colour))


def reboot(colour):
    return ('<g fill="none" stroke="%s" stroke-width="2.5" stroke-linecap="round" stroke-linejoin="round">'
            '<path d="M25 16 a9 9 0 1 1 -3 -6.7"/><path d="M23 4 v6 h-6"/></g>' % colour)


def chip(colour):
    pins = "".join('<line x1="%d" y1="3" x2="%d" y2="7"/><line x1="%d" y1="25" x2="%d" y2="29"/>'
                   % (x, x, x, x) for x in (11, 16, 21))
    return ('<g stroke="%s" stroke-width="2" stroke-linecap="round">%s</g>'
            '<rect x="6" y="7" width="20" height="18" rx="2" fill="%s" fill-opacity="0.25" stroke="%s" '
            'stroke-width="2"/><path d="M16 11 v8 M12.5 15.5 l3.5 3.5 l3.5 -3.5" fill="none" stroke="%s" '
            'stroke-width="2" stroke-linecap="round" stroke-linejoin="round"/>'
            % (colour, pins, colour, colour, colour))


def eraser(colour):
    return ('<g fill="none" stroke="%s" stroke-width="2" stroke-linejoin="round" stroke-linecap="round">'
            '<path d="M5 20 l11 -11 l9 9 l-7 7 h-8 z" fill="%s" fill-opacity="0.2"/>'
            '<line x1="10" y1="15" x2="19" y2="24"/><line x1="14" y1="27" x2="28" y2="27"/></g>'
            % (colour, colour))


ICONS = {
    "localConnection": usb_plug(DARK),
    "localConnection_on": usb_plug(GREEN) + badge(GREEN, "tick"),
    "localConnection_off": usb_plug(GREY) + badge(RED, "cross"),
    "remoteConnection": globe(DARK),
    "remoteConnection_on": globe(GREEN) + badge(GREEN, "tick"),
    "remoteConnection_off": globe(GREY) + badge(RED, "cross"),
    "green_state": lamp(GREEN, "#9be39f"),
    "red_state": lamp(RED, "#ff9a8f"),
    "cloud_up_white": cloud(WHITE, '<path d="M16 24 v-9 M12.5 18 l3.5 -3.5 l3.5 3.5"/>'),
    "cloud_plus": cloud(GREEN, '<path d="M16 14 v8 M12 18 h8"/>'),
    "cloud_close": cloud(RED, '<path d="M13 15 l6 6 M19 15 l-6 6"/>'),
    "satellite": satellite(BLUE),
    "satellite_white": satellite(WHITE),
    "light_bulb": light_bulb(DARK, AMBER),
    "light_bulb_white": light_bulb(WHITE, "none"),
    "sim_card": sim_card("#5c6773", "#5c6773", "none"),
    "sim_card_inserted": sim_card(DARK, DARK, AMBER),
    "sim_card_green": sim_card(GREEN, GREEN, "#9be39f"),
    "sim_card_active": sim_card(GREEN, GREEN, "#9be39f",
                                '<circle cx="24" cy="6" r="4.5" fill="%s" stroke="white"/>' % GREEN),
    "cfg_read": arrow_doc("down"),
    "cfg_write": arrow_doc("up"),
    "settings": gear(DARK),
    "file_new": document(DARK, '<path d="M16 13 v10 M11 18 h10" stroke="%s" stroke-width="2.5" '
                               'stroke-linecap="round"/>' % GREEN),
    "file_open": folder(AMBER),
    "file_save": floppy(BLUE),
    "reboot": reboot(BLUE),
    "firmware": chip(DARK),
    "clear_memory": eraser(RED),
}

# Small marks the style sheets draw on spin boxes, combo boxes and check boxes (16x16), one set for
# the light theme and a white one for the dark theme.
def chevron(colour, up):
    d = "M9 20 l7 -7 l7 7" if up else "M9 12 l7 7 l7 -7"
    return ('<path d="%s" fill="none" stroke="%s" stroke-width="3.5" stroke-linecap="round" '
            'stroke-linejoin="round"/>' % (d, colour))


def check_mark(colour):
    return ('<path d="M7 16.5 l6 6 l12 -13" fill="none" stroke="%s" stroke-width="4" stroke-linecap="round" '
            'stroke-linejoin="round"/>' % colour)


SMALL = {
    "arrow_up": chevron(DARK, True),
    "arrow_down": chevron(DARK, False),
    "arrow_up_white": chevron("#e3e8ed", True),
    "arrow_down_white": chevron("#e3e8ed", False),
    "check_white": check_mark(WHITE),
}

SIZES = {"app": 256}


def spinner_frame(i, count):
    # Twelve spokes; the bright one walks round, the others fade behind it.
    spokes = []
    for k in range(count):
        age = (i - k) % count
        alpha = max(0.15, 1.0 - age / count)
        spokes.append('<rect x="15" y="2" width="2.6" height="8" rx="1.3" fill="%s" fill-opacity="%.2f" '
                      'transform="rotate(%d 16.3 16)"/>' % (BLUE, alpha, k * 360 // count))
    return "".join(spokes)


def rasterise(svg_text, name, size):
    src = os.path.join(SVG_OUT, name + ".svg")
    with open(src, "w", encoding="utf-8") as f:
        f.write(svg_text)
    subprocess.run(["rsvg-convert", "-w", str(size), "-h", str(size), src, "-o",
                    os.path.join(OUT, name + ".png")], check=True)


def main():
    os.makedirs(SVG_OUT, exist_ok=True)
    for name, body in ICONS.items():
        rasterise(svg(body), name, 32)
    for name, body in SMALL.items():
        rasterise(svg(body), name, 16)
    rasterise(svg(app_icon()), "app", SIZES["app"])
    shutil.copy(os.path.join(SVG_OUT, "app.svg"), os.path.join(OUT, "tavrel-cfg.svg"))

    count = 12
    with tempfile.TemporaryDirectory() as tmp:
        frames = []
        for i in range(count):
            src = os.path.join(tmp, "f%02d.svg" % i)
            png = os.path.join(tmp, "f%02d.png" % i)
            with open(src, "w", encoding="utf-8") as f:
                f.write(svg(spinner_frame(i, count), 48))
            subprocess.run(["rsvg-convert", "-w", "48", "-h", "48", src, "-o", png], check=True)
            frames.append(png)
        subprocess.run([CONVERT, "-delay", "8", "-loop", "0", "-dispose", "Background", *frames,
                        os.path.join(OUT, "loading.gif")], check=True)


def write_resource_list():
    """resources.qrc lists every PNG and GIF of images/ and the two style sheets, sorted."""
    images = sorted(f for f in os.listdir(OUT) if f.endswith((".png", ".gif")))
    lines = ['<!DOCTYPE RCC>', '<RCC version="1.0">', '    <qresource prefix="/">']
    lines += ['        <file>images/%s</file>' % f for f in images]
    lines += ['        <file>css/style.css</file>', '        <file>css/styleBlack.css</file>']
    lines += ['    </qresource>', '</RCC>']
    with open(os.path.join(ROOT, "resources", "resources.qrc"), "w", encoding="utf-8") as f:
        f.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
    write_resource_list()
