# SPDX-License-Identifier: Apache-2.0
# The front door. Every target installs the Debian packages it misses, then builds.
#
#   make run                     qm on README.md
#   make run ARGS="info -s ."    qm with arguments of your own
#   make test                    build and pass every test
#   make bench                   print what was measured, and write it into bench/report.md
#   make soak                    read 100,000 files, a tenth of them hostile, and look for leaks
#   make install PREFIX=/usr     install what was built; DESTDIR goes in front
#   make deb                     Debian packages, in build/deb
#   make docs                    the library's reference, in build/docs/html
#   make pictures                draw the pictures in docs/ again, with what qm prints now
#   make format                  let clang-format rewrite the sources
#   make fuzz                    fuzz every target for a minute
#   make coverage                which lines and branches the tests reach; HTML in build/coverage
#   make tidy                    clang-tidy with all of its checks

ARGS ?= info README.md
# By the name that GNU makefiles give it, or by the one that most others do.
prefix = /usr/local
PREFIX ?= $(prefix)
BUILD := build/release

.PHONY: all build run test bench soak fuzz coverage tidy install deb docs pictures format clean

all: build

build:
	@packaging/install-packages build >&2
	@test -e $(BUILD)/build.ninja || cmake --preset release -DQM_BUILD_TESTS=OFF >/dev/null
	@cmake --build --preset release --target qm >&2

run: build
	@$(BUILD)/qm $(ARGS)

test:
	@packaging/install-packages build test
	cmake --preset release $(CMAKE_FLAGS)
	cmake --build --preset release
	ctest --preset release

bench:
	@packaging/install-packages build bench
	cmake --preset bench
	cmake --build --preset bench
	bench/run --report bench/report.md --plot docs/complexity.svg build/bench

soak:
	@packaging/install-packages build bench
	cmake --preset bench
	cmake --build --preset bench
	bench/soak build/bench

fuzz:
	@packaging/install-packages build check
	cmake --preset fuzz
	cmake --build --preset fuzz
	fuzz/run build/fuzz 60

coverage:
	@packaging/install-packages build test coverage
	cmake --preset coverage
	cmake --build --preset coverage
	tests/coverage --begin build/coverage
	ctest --preset coverage
	tests/coverage build/coverage

tidy:
	@packaging/install-packages build test check
	cmake --preset tidy
	cmake --build --preset tidy --target qm_uniform_types_generated
	run-clang-tidy -quiet -p build/tidy '^$(CURDIR)/(cli|model|services|foundation|platform)/'

# Programs know the prefix, so it is chosen before they are linked.
install:
	@packaging/install-packages build >&2
	@test -e $(BUILD)/build.ninja || cmake --preset release -DQM_BUILD_TESTS=OFF >/dev/null
	@cmake -S . -B $(BUILD) -DCMAKE_INSTALL_PREFIX=$(PREFIX) >/dev/null
	@cmake --build --preset release --target installed_files >&2
	cmake --install $(BUILD)

deb:
	@packaging/install-packages build deb
	packaging/build-packages build/deb

docs:
	@packaging/install-packages docs
	@mkdir -p build/docs
	doxygen docs/Doxyfile

pictures: build
	docs/make-terminal-picture $(BUILD)/qm docs/terminal.svg

format:
	@packaging/install-packages check
	git ls-files '*.h' '*.cpp' | xargs clang-format -i

clean:
	rm -rf build
