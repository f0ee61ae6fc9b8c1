"""Names what the public headers declare without a comment. Doxygen itself says nothing of functions and types outside a
class, nor of the values of an enumeration's parent. A comment that describes one parameter by \\param
describes them all; whether prose speaks of each is for the reader to judge."""
import sys
from pathlib import Path
from xml.etree import ElementTree

COMPOUNDS = ("class", "struct", "union")


def is_bare(element):
    return not any("".join(element.find(part).itertext()).strip()
                   for part in ("briefdescription", "detaileddescription", "inbodydescription")
                   if element.find(part) is not None)


def flaws(element, title):
    place = element.find("location")
    if place is None or "include/vantorium/" not in place.get("file", ""):
        return
    where = f"{place.get('file')}:{place.get('line')}: {title}"
    if is_bare(element) and "::~" not in title:
        yield f"{where} has no comment"
    documented = {name.text for name in element.iter("parametername")}
    parameters = {name.text for name in element.findall("param/declname")}
    if documented and parameters - documented:
        yield f"{where} describes some of its parameters, but not {', '.join(sorted(parameters - documented))}"


def main():
    found = set()
    for file in Path(sys.argv[1]).glob("*.xml"):
        for compound in ElementTree.parse(file).getroot().findall("compounddef"):
            title = compound.findtext("compoundname")
            if compound.get("kind") in COMPOUNDS and compound.get("prot", "public") == "public":
                found.update(flaws(compound, title))
            for member in compound.iter("memberdef"):
                if member.get("prot") == "public" and compound.get("kind") in (*COMPOUNDS, "namespace", "file"):
                    found.update(flaws(member, member.findtext("qualifiedname") or member.findtext("name")))
    print("\n".join(sorted(found)))
    return 1 if found else 0


sys.exit(main())
