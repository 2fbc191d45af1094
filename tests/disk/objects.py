"""Makes CAD folders, requests and responses for tests and measurements in Python."""

CONFIGURATION = """<configuration cad="CREO" identifier="filename">
  <type name="part"/>
</configuration>"""
ANSWERED = ' phid="PH{0}" ceStamp="CE{0}" macroceStamp="M1" xsStamp="X1" hashcode="h{0}" mxtype="T" selected="true"'


class Objects:
    """count objects in folders of 500, below root, which is where they are asked for."""

    def __init__(self, root, count):
        self.root = root
        self.count = count

    def folder(self, number):
        return f"f{number // 500}"

    def make_files(self, backing):
        for number in range(self.count):
            file = backing / self.folder(number) / f"p{number}.prt.1"
            file.parent.mkdir(exist_ok=True)
            file.write_text("object")

    def record(self, number):
        return f"{self.root}/{self.folder(number)}/.KORVANTHEMIX/p{number}.prt.xml"

    def response(self):
        return f'<response cname="checkoutEx"><info>{self._list(ANSWERED)}</info></response>'

    def request(self):
        return f'<command cname="synclocalrecognition">{self._list("")}</command>'

    def _list(self, more):
        def cad_object(number):
            place = f'filename="p{number}.prt.1" dirname="{self.root}/{self.folder(number)}"'
            return f'<cadobject cadid="C{number}" type="part" {place}{more.format(number)}/>'

        return "<cadobjectlist>" + "".join(map(cad_object, range(self.count))) + "</cadobjectlist>"
