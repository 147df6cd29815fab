# All that a newcomer needs. "make help" lists it.

PREFIX ?= /usr/local
JOBS ?= $(shell nproc)

RELEASE := build/release

# $(call build,PRESET,TARGETS): configures and builds; no targets means all.
define build
mkdir -p build
cmake --preset $(1) > build/$(1)-configure.log 2>&1 || { cat build/$(1)-configure.log; exit 1; }
cmake --build --preset $(1) $(if $(2),--target $(2)) -- -j$(JOBS)
endef

.PHONY: help deps run test check-long fuzz bench contact-sheet screenshots install package format lint clean

help:
	@echo "make run              show the badges of a sample working copy, answered over a private bus"
	@echo "make run WC=/path     the same for a working copy of yours; changes nothing in it"
	@echo "make test             check format and layering, run all tests, also under sanitizers"
	@echo "make check-long       the same and more: the linter, storms under sanitizers, many more random working copies, the packages, and all file managers"
	@echo "make fuzz             try what is read from outside with made-up input, a minute each"
	@echo "make bench            compare with 'svn status' and others, as tables"
	@echo "make bench LONG=1     the same on up to a million files"
	@echo "make contact-sheet    draw the badges' icons into docs/images/badges.png"
	@echo "make screenshots      take pictures of the file managers into docs/images"
	@echo "make install          install below PREFIX (now $(PREFIX)); honours DESTDIR"
	@echo "make package          build Debian packages into build/packages"
	@echo "make deps             install the Debian packages that the tests need and that are missing"
	@echo "make format, lint     format the sources; check them and run the linter on the product's"
	@echo "make clean            remove everything that was built"

deps:
	@tools/install-dependencies test

# Without tests, so that it needs neither their packages nor those of the file managers.
run:
	@tools/install-dependencies run
	@$(call build,run,halvern halvern-finder-sync)
	@tools/run build/run $(if $(WC),"$(WC)")

test: deps
	@JOBS=$(JOBS) tools/test

check-long:
	@tools/install-dependencies file-managers debhelper lintian
	@JOBS=$(JOBS) tools/check-long

fuzz: deps
	@JOBS=$(JOBS) tools/fuzz

bench: deps
	@$(call build,release,extension_bench growth_bench hostile_bench start_bench memory_bench scan_bench watch_bench file_manager_bench)
	@tools/bench "$(RELEASE)" $(if $(LONG),1000 10000 100000 1000000)

contact-sheet: deps
	@$(call build,release,contact_sheet halvern-finder-sync)
	@tools/contact-sheet "$(RELEASE)" docs/images/badges.png

screenshots:
	@tools/install-dependencies file-managers
	@$(call build,release,screenshots)
	@tools/screenshots/take "$(RELEASE)" docs/images

install:
	@tools/install-dependencies install
	cmake --preset release -B build/install -DCMAKE_INSTALL_PREFIX="$(PREFIX)" -DHALVERN_TESTS=OFF
	cmake --build build/install -- -j$(JOBS)
	DESTDIR="$(DESTDIR)" cmake --install build/install

package:
	@tools/install-dependencies install debhelper
	@JOBS=$(JOBS) tools/package

format:
	clang-format-14 -i $$(tools/sources)

lint: deps
	@$(call build,debug)
	@tools/check-sources
	@JOBS=$(JOBS) tools/lint

clean:
	rm -rf build
