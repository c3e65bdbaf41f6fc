#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# What is in films and recordings, as an application is told it. MEDIA_SAMPLES names a folder of
# them, each with a feature of its own.

load helpers
load metadata

MEDIA_SAMPLES=$(realpath "${MEDIA_SAMPLES:?must name the folder of films and recordings}")

# tells SAMPLE ENTRY...: the entries of a sample, each as KEY=VALUE, with "!" behind primary ones.
tells() {
    show "$MEDIA_SAMPLES/$1"
    succeeds
    json_holds '[e["key"] + "=" + e["value"] + "!" * e["isPrimary"] for e in document[0]["entries"]]
                == wanted' "${@:2}"
}

@test "a film" {
    tells h264.mp4 'duration=00:01!' 'dimensions=64 × 48!' 'frameRate=10.00 fps' 'videoCodec=avc1' \
        'audioTracks=1' 'audioCodec=aac '
    json_holds 'document[0]["category"] == 3 and document[0]["categoryName"] == "meta.cat.video"'
    json_holds '[e["localizedKey"] for e in document[0]["entries"]] == ["meta.video." + name for name
                in ("duration", "dimensions", "frameRate", "codec", "audioTracks", "audioCodec")]'
}

@test "a film without sound, one without pictures" {
    tells silent.mp4 'duration=00:01!' 'dimensions=64 × 48!' 'frameRate=10.00 fps' \
        'videoCodec=avc1' 'audioTracks=0'
    tells words.mp4 'duration=00:02!' 'audioTracks=0'
}

@test "films as they are shown" {
    tells portrait.mov 'duration=00:01!' 'dimensions=48 × 64!' 'frameRate=10.00 fps' \
        'videoCodec=avc1' 'audioTracks=0'
    tells wide-portrait.mov 'duration=00:01!' 'dimensions=480 × 853!' 'frameRate=2.00 fps' \
        'videoCodec=avc1' 'audioTracks=0'
    tells hours.mp4 'duration=10:00:00!' 'dimensions=64 × 48!' 'frameRate=0.00 fps' \
        'videoCodec=avc1' 'audioTracks=0'
    tells almost-a-minute.mp4 'duration=00:59!' 'dimensions=64 × 48!' 'frameRate=10.00 fps' \
        'videoCodec=avc1' 'audioTracks=0'
    tells ntsc.m4v 'duration=00:02!' 'dimensions=64 × 48!' 'frameRate=29.97 fps' 'videoCodec=avc1' \
        'audioTracks=0'
}

@test "a recording" {
    tells tagged.mp3 'duration=0:02!' 'codec=.mp3' 'sampleRate=44100 Hz' 'channels=Stereo' \
        'title=A title!' 'artist=An artist!' 'album=An album'
    json_holds 'document[0]["category"] == 4 and document[0]["categoryName"] == "meta.cat.audio"'
    json_holds '[e["localizedKey"] for e in document[0]["entries"]] == ["meta.audio." + name for name
                in ("duration", "codec", "sampleRate", "channels", "title", "artist", "album")]'
}

@test "recordings with all that they have, in its order" {
    tells twice.flac 'duration=0:02!' 'codec=flac' 'sampleRate=44100 Hz' 'channels=Stereo' \
        'artist=First!' 'title=One!' 'title=One!' 'album=Größe' 'artist=Second!'
    tells six.wav 'duration=0:01!' 'codec=lpcm' 'sampleRate=96000 Hz' 'channels=6' 'bitDepth=24 Bit'
    tells long.flac 'duration=62:05!' 'codec=flac' 'sampleRate=8000 Hz' 'channels=Mono'
    tells ms-adpcm.wav 'duration=0:02!' 'codec=ms' 'sampleRate=44100 Hz' 'channels=Stereo'
}

@test "formats without a code of their own" {
    tells vorbis.ogg 'duration=0:02!' 'codec=—' 'sampleRate=44100 Hz' 'channels=Stereo' \
        'title=One!' 'artist=First!' 'title=Two!'
    tells wmv2.wmv 'duration=00:01!' 'dimensions=64 × 48!' 'frameRate=10.00 fps' 'videoCodec=WMV2' \
        'audioTracks=1' 'audioCodec=—'
    tells undescribed.mp4 'duration=00:01!' 'dimensions=0 × 0!' 'frameRate=10.00 fps' \
        'audioTracks=0'
}

@test "channels and depth only along with the sample rate" {
    show --keys channels,bitDepth,duration "$MEDIA_SAMPLES/16.wav"
    succeeds
    json_holds '[e["key"] for e in document[0]["entries"]] == ["duration"]'
    show --keys channels,sampleRate "$MEDIA_SAMPLES/16.wav"
    json_holds '[e["value"] for e in document[0]["entries"]] == ["44100 Hz", "Mono"]'
}

@test "files are read by their content, whatever their extension" {
    cp "$MEDIA_SAMPLES/vp9.webm" film.mov
    cp "$MEDIA_SAMPLES/h264.mkv" sound.mp3
    show film.mov sound.mp3
    succeeds
    json_holds '[e["value"] for d in document for e in d["entries"] if "odec" in e["key"]] ==
                ["vp09", "opus", "flac"]'
}

@test "notes have a length, but no sound" {
    # A note as long as 720 quarters, of which there are four in a second.
    printf 'MThd\0\0\0\6\0\0\0\1\0\x60MTrk\0\0\0\x14\0\xff\x51\3\3\xd0\x90\0\x90\x40\x40\x84\x9c\0\x80\x40\0\0\xff\x2f\0' \
        >song.mid
    cp song.mid song.midi
    show song.mid song.midi
    succeeds
    json_holds '[[e["key"] + "=" + e["value"] for e in d["entries"]] for d in document] ==
                [["duration=3:00"]] * 2'
}

@test "nothing can be told of what is neither film nor recording" {
    : >empty.mp4
    echo text >text.mp3
    printf '#EXTM3U\n%s\n' "$MEDIA_SAMPLES/h264.ts" >list.mp4
    printf "ffconcat version 1.0\nfile '%s'\n" "$MEDIA_SAMPLES/h264.ts" >other.mov
    ln -s /dev/zero zero.avi
    mkfifo fifo.wav
    show empty.mp4 text.mp3 list.mp4 other.mov zero.avi fifo.wav
    succeeds
    json_holds '[d["entries"] for d in document] == [[]] * 6'
}

@test "three thousand damaged films and recordings" {
    local count=3200
    [ -z "${SANITIZERS:-}" ] || count=400
    timeout 170 python3 "$BATS_TEST_DIRNAME/damage_media.py" "$SHOW_METADATA" "$MEDIA_SAMPLES" \
        "$count"
}
