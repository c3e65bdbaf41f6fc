# SPDX-License-Identifier: Apache-2.0
# Third-party libraries, all Debian packages; docs/dependencies.md gives the reasons.
#
# What `qm` needs at every start is linked statically where Debian ships an archive: resolving
# and relocating these shared libraries costs more time than hashing a small file.
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(nlohmann_json 3.11 REQUIRED)
find_package(fmt 9 REQUIRED)

# qm_static_library(TARGET HEADER ARCHIVE...): an interface target over static archives.
function(qm_static_library target header)
  add_library(${target} INTERFACE)
  find_path(${target}_INCLUDE_DIR ${header} REQUIRED)
  target_include_directories(${target} SYSTEM INTERFACE ${${target}_INCLUDE_DIR})
  foreach(name IN LISTS ARGN)
    find_library(${target}_${name} lib${name}.a REQUIRED)
    target_link_libraries(${target} INTERFACE ${${target}_${name}})
  endforeach()
  target_link_libraries(${target} INTERFACE Threads::Threads ${CMAKE_DL_LIBS})
endfunction()

qm_static_library(qm_icu unicode/utypes.h icui18n icuuc icudata)
qm_static_library(qm_crypto openssl/sha.h crypto)

# The same for the shared library, whose users load what the system keeps up to date.
pkg_check_modules(ICU REQUIRED IMPORTED_TARGET icu-i18n icu-uc)
pkg_check_modules(CRYPTO REQUIRED IMPORTED_TARGET libcrypto)

pkg_check_modules(BLKID REQUIRED IMPORTED_TARGET blkid)
pkg_check_modules(PLIST REQUIRED IMPORTED_TARGET libplist-2.0)
pkg_check_modules(GLIB REQUIRED IMPORTED_TARGET glib-2.0)

# For the disk-image tool alone.
find_package(BZip2 REQUIRED)
find_package(LibLZMA REQUIRED)
pkg_check_modules(DEFLATE REQUIRED IMPORTED_TARGET libdeflate)

# For the process that reads media.
pkg_check_modules(SECCOMP REQUIRED IMPORTED_TARGET libseccomp)
# For the reader of untrusted media alone.
find_package(GIF REQUIRED)
find_package(JPEG REQUIRED)
find_package(PNG REQUIRED)
find_package(TIFF REQUIRED)
pkg_check_modules(EXIV2 REQUIRED IMPORTED_TARGET exiv2)
pkg_check_modules(HEIF REQUIRED IMPORTED_TARGET libheif)
pkg_check_modules(LCMS REQUIRED IMPORTED_TARGET lcms2)
pkg_check_modules(POPPLER REQUIRED IMPORTED_TARGET poppler>=22.12)
pkg_check_modules(WEBPDEMUX REQUIRED IMPORTED_TARGET libwebpdemux)
# For the reader of films and recordings alone.
pkg_check_modules(FFMPEG REQUIRED IMPORTED_TARGET libavformat libavcodec libavutil)
pkg_check_modules(TAGLIB REQUIRED IMPORTED_TARGET taglib)

# Loaded while the program runs, so only its headers are needed here.
find_path(QM_SD_BUS_INCLUDE_DIR systemd/sd-bus.h REQUIRED)

# Test images are written with another library than they are read with.
if(QM_BUILD_TESTS OR QM_BUILD_BENCH)
  find_package(ZLIB REQUIRED)
endif()
