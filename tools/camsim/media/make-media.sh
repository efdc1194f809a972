#!/bin/sh
# Makes the media that camsim sends over RTP. Run once; the files are kept
# in the repository, so the build needs no encoder. Needs ffmpeg (Debian's
# ffmpeg package, with its libx264). -bitexact keeps the encoder's version
# out of the files, so running it again gives the same bytes.
#
#   clip.h264  H.264 Annex-B byte stream: 2 s of a test pattern, 320x240,
#              25 pictures a second, Constrained Baseline, an IDR picture
#              every second with SPS and PPS before each, no SEI
#   clip.m4v   MPEG-4 Visual elementary stream: the same pattern, Simple
#              Profile, an I-VOP every second, configuration in front
#   tone.g726  G.726 at 32 kbit/s, 1 s of a 440 Hz tone at 8 kHz, the
#              code words packed from the low nibble up (as RTP carries them)
set -e
cd "$(dirname "$0")"
ffmpeg -hide_banner -loglevel error -y -f lavfi -i testsrc2=size=320x240:rate=25 -t 2 \
  -c:v libx264 -profile:v baseline -preset veryfast -crf 30 -g 25 -keyint_min 25 \
  -sc_threshold 0 -bf 0 -x264-params repeat-headers=1 -bsf:v filter_units=remove_types=6 \
  -fflags +bitexact -flags:v +bitexact -f h264 clip.h264
ffmpeg -hide_banner -loglevel error -y -f lavfi -i testsrc2=size=320x240:rate=25 -t 2 \
  -c:v mpeg4 -g 25 -bf 0 -q:v 20 -fflags +bitexact -flags:v +bitexact -f m4v clip.m4v
ffmpeg -hide_banner -loglevel error -y -f lavfi -i sine=frequency=440:sample_rate=8000:duration=1 \
  -c:a g726le -b:a 32k -fflags +bitexact -flags:a +bitexact -f g726le tone.g726
