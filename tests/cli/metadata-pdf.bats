#!/usr/bin/env bats
# SPDX-License-Identifier: Apache-2.0
# What is told of PDFs, through the process that reads them.

load helpers
load metadata

setup_file() {
    samples="$BATS_FILE_TMPDIR/samples"
    export samples
    "$BATS_TEST_DIRNAME/../samples/make-pdf-samples" "$samples"
}

# Two pages, and the information that is given as a dictionary of PDF.
make_pdf() {
    cat >"$1" <<END
%PDF-1.4
1 0 obj <</Type/Catalog/Pages 2 0 R>> endobj
2 0 obj <</Type/Pages/Count 2/Kids[3 0 R 3 0 R]>> endobj
3 0 obj <</Type/Page/Parent 2 0 R/Contents 4 0 R/Resources<</Font<</F 5 0 R>>>>>> endobj
4 0 obj <</Length 27>> stream
BT /F 9 Tf (Text) Tj ET    
endstream endobj
5 0 obj <</Type/Font/Subtype/Type1/BaseFont/Helvetica>> endobj
6 0 obj $2 endobj
trailer <</Root 1 0 R/Info 6 0 R>>
END
}

@test "a PDF has seven entries at most, and a category" {
    make_pdf paper.pdf '<</Title(On Files)/Author(<A>)/Creator<FEFF00DC>>>'
    show paper.pdf
    succeeds
    json_holds 'document[0]["category"] == 6 and document[0]["categoryName"] == "meta.cat.pdf"'
    json_holds '[e["key"] for e in document[0]["entries"] if e["isPrimary"]] == ["pageCount"]'
    values_are 'pageCount=2,pdfVersion=1.4,title=On Files,author=<A>,creator=Ü,encrypted=meta.no,searchable=meta.yes'
    json_holds '[e["localizedKey"] for e in document[0]["entries"]] == [
        "meta.pdf." + k for k in ("pageCount", "version", "title", "author", "creator", "encrypted",
                                  "searchable")]'
    make_pdf paper.PDF '<<>>'
    show paper.PDF
    values_are 'pageCount=2,pdfVersion=1.4,encrypted=meta.no,searchable=meta.yes'
}

@test "only the keys that are asked for" {
    make_pdf paper.pdf '<</Author(A)>>'
    show --keys searchable,author,title paper.pdf
    succeeds
    values_are 'author=A,searchable=meta.yes'
    show --keys title paper.pdf
    values_are ''
}

@test "documents with passwords" {
    qpdf --encrypt '' owner 256 -- "$samples/all.pdf" open.pdf
    qpdf --encrypt user owner 256 -- "$samples/all.pdf" locked.pdf
    show open.pdf
    succeeds
    values_are 'pageCount=1,pdfVersion=1.7,title=T,author=A,creator=C,encrypted=meta.yes,searchable=meta.yes'
    show locked.pdf
    succeeds
    values_are 'pageCount=0,pdfVersion=1.7,encrypted=meta.yes'
}

@test "what is no PDF has no entries, but a result" {
    echo text >text.pdf
    : >empty.pdf
    printf '%%PDF-1.4\n' >header.pdf
    ln -s nowhere dangling.pdf
    mkfifo fifo.pdf
    ln -s /dev/zero zero.pdf
    show text.pdf empty.pdf header.pdf dangling.pdf fifo.pdf zero.pdf
    succeeds
    json_holds 'all(d["category"] == 6 and d["entries"] == [] for d in document)'
}

@test "every sample is told of in a row, however many are read at a time" {
    local jobs
    show "$samples"/*.pdf
    succeeds
    cp "$seen/out" first
    json_holds 'sum(d["entries"] == [] for d in document) == 2 and len(document) > 70'
    for jobs in 2 16; do
        show --jobs "$jobs" "$samples"/*.pdf
        cmp "$seen/out" first
    done
}

@test "two thousand damaged PDFs" {
    local count=2000
    [ -z "${SANITIZERS:-}" ] || count=400
    timeout 600 python3 "$BATS_TEST_DIRNAME/damage_pdfs.py" "$SHOW_METADATA" "$count" "$samples"
}
