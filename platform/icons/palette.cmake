# The look of the unit, once. Every value below may stand as @name@ in a template of svg/; values that differ between
# a key at rest and a key held or checked have the suffix _n or _p and stand in the templates without it.
# README.md shows what is used for what and which contrasts hang on it.

# Ground colours. well and page are dark enough for the crossover's grey curve, rgb(100,100,100), to keep 3:1 on them.
set(page            "#10131A")
set(well            "#090B10")
set(panel           "#262933")   # rgb(38,41,51), the fill of the value fields between two keys
set(line            "#1F2531")   # grid lines, tracks: seen, not read
set(line_strong     "#39414F")   # axes, zero lines, separators
# The crossover's grid: the grey curve, rgb(100,100,100), keeps 3:1 on its ground and on its lines, which leaves lines
# as dark as these, and a ground that is black so that they are seen at all.
set(grid_ground     "#000000")
set(grid_line       "#14181E")
set(scale           "#566176")   # main ticks of a scale
set(ink             "#EEEEEC")
set(ink_dim         "#A7AFBF")   # numbers on scales; 4.5:1 and more on well, page and panel
set(accent          "#0094DD")
set(accent_bright   "#5CC8FF")
set(accent_deep     "#0B4A70")

# The three speaker groups of the crossover and the two filters of the stand-alone page keep the colours their pages use.
set(curve_front     "#FF6C00")
set(curve_rear      "#FFCC00")
set(curve_subwoofer "#646464")
set(high_pass       "#009140")
set(low_pass        "#0094DD")
set(go              "#12B75C")

# Keys: face from top to bottom, edge, glyph, and the lamp at the foot of tabs and tiles.
set(face_top_n      "#2E3440")
set(face_bottom_n   "#222731")
set(face_top_p      "#0A3D5E")
set(face_bottom_p   "#0C4F77")
set(edge_n          "#414A5A")
set(edge_p          "#2FB2F5")
set(glyph_ink_n     "#EEEEEC")
set(glyph_ink_p     "#FFFFFF")
set(tab_lamp_n      "none")
set(tab_lamp_p      "#5CC8FF")
set(lamp_n          "#39414F")
set(lamp_p          "#5CC8FF")
set(motif_n         "#8E98AB")
set(motif_p         "#8FD9FF")

# Switches: the groove and the knob in it.
set(track_n         "#090B10")
set(track_p         "#0078B8")
set(knob_n          "#8E98AB")
set(knob_p          "#FFFFFF")

# The equalizer's handles, and the car that stands for the room: grey, so that only what is set has colour.
set(handle_edge     "#7C879B")
set(handle_light    "#566173")
set(handle_dark     "#343B48")
set(car_paint       "#4A5466")
set(car_shade       "#343C4A")
set(car_edge        "#6B7689")
set(car_glass       "#191F29")
set(car_seat        "#2C3441")
set(car_head_lamp   "#C9D2E2")
set(car_tail_lamp   "#C2424A")

# Widths and radii in pixels of the unscaled picture.
set(edge_width_n    1)
set(edge_width_p    2)
set(glyph_width     4)
set(key_radius      10)
set(tile_radius     14)
set(field_radius    4)
set(key_margin      2)           # between a key's face and the edge of its picture

# Scale numbers. Named, so that a build machine without it is refused instead of guessing another.
set(font_family     "Noto Sans")
set(font_package    "fonts-noto-core")
