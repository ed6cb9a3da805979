"""Archives that are programs of others as the requesters of our provider, and as the destinations of what it moves."""

import unittest
import urllib.error

import made_files
import network_peers
import pydicom
from our_provider import Provider, ask


class Archives(unittest.TestCase, made_files.ArrivedFiles):
    @classmethod
    def setUpClass(cls):
        cls.folder = cls.enterClassContext(network_peers.a_folder())
        cls.sources = made_files.two_studies(cls.folder / "two")
        cls.studies = [str(pydicom.dcmread(cls.sources[number]).StudyInstanceUID) for number in (0, 3)]
        cls.peer = cls.enterClassContext(network_peers.orthanc())

    def setUp(self):
        self.peer.forget_everything()

    def new_folder(self):
        return self.enterContext(network_peers.a_folder(self.folder))

    def provider(self, *words):
        """With these words, and known to Orthanc, which it knows."""
        provider = self.enterContext(Provider(*words, f"ARCHIVE={self.peer.port}"))
        self.peer.introduce("OURS", provider.port)
        return provider

    def fill(self):
        """The identifiers that Orthanc gives to what it is given past the network."""
        return [self.peer.tell("instances", path.read_bytes())["ID"] for path in self.sources]

    def assert_holds(self, sources):
        """Orthanc has these, and nothing else."""
        folder = self.new_folder()
        for identifier in self.peer.ask("instances"):
            (folder / identifier).write_bytes(self.peer.fetch(f"instances/{identifier}/file"))
        self.assert_arrived(sources, folder.iterdir())

    def test_orthanc_asks_whether_ours_is_there(self):
        self.provider()
        self.assertEqual(self.peer.tell("modalities/OURS/echo", {}), {})
        with Provider("--title", "OTHER") as provider:
            self.peer.introduce("STRANGER", provider.port)
            with self.assertRaises(urllib.error.HTTPError):
                self.peer.tell("modalities/STRANGER/echo", {})

    def test_what_orthanc_stores_arrives_as_it_was(self):
        folder = self.new_folder()
        self.provider(folder)
        said = self.peer.tell("modalities/OURS/store", self.fill())
        self.assertEqual((said["InstancesCount"], said["FailedInstancesCount"]), (len(self.sources), 0))
        self.assert_arrived(self.sources, folder.iterdir())

    def test_orthanc_hears_of_a_refusal(self):
        self.provider("--status", "0xA700")
        identifiers = self.fill()
        with self.assertRaises(urllib.error.HTTPError) as failure:
            self.peer.tell("modalities/OURS/store", identifiers)
        self.assertIn("A700", failure.exception.read().decode().upper())

    def query(self, level, **keys):
        """(its identifier, the answers by their names)"""
        identifier = self.peer.tell("modalities/OURS/query", {"Level": level, "Query": keys})["ID"]
        answers = self.peer.ask(f"queries/{identifier}/answers")
        return identifier, [self.peer.ask(f"queries/{identifier}/answers/{answer}/content?simplify") for answer in answers]

    def test_orthanc_finds_what_ours_has_and_retrieves_it(self):
        folder = self.new_folder()
        self.provider(folder)
        self.peer.tell("modalities/OURS/store", self.fill())
        self.peer.forget_everything()
        self.assertEqual(self.peer.ask("instances"), [])

        _, answers = self.query("Study", PatientID="", PatientName="", StudyDate="", StudyInstanceUID="")
        found = {answer["PatientID"]: tuple(answer[name] for name in ("PatientName", "StudyDate", "StudyInstanceUID")) for answer in answers}
        self.assertEqual(len(answers), 2)
        self.assertEqual(found, {"A": ("Müller^Zoë", "19991231", self.studies[0]), "B": ("Doe^John", "20240229", self.studies[1])})
        self.assertEqual(self.query("Study", PatientID="C")[1], [])

        _, answers = self.query("Instance", PatientID="A", StudyInstanceUID=self.studies[0], SOPInstanceUID="", InstanceNumber="")
        images = [pydicom.dcmread(path) for path in self.sources[:3]]
        self.assertEqual({answer["SOPInstanceUID"]: answer["InstanceNumber"] for answer in answers},
                         {str(image.SOPInstanceUID): str(image.InstanceNumber) for image in images})

        retrieved, answers = self.query("Study", PatientID="B", StudyInstanceUID="")
        self.assertEqual([answer["StudyInstanceUID"] for answer in answers], self.studies[1:])
        self.peer.tell(f"queries/{retrieved}/retrieve", {"TargetAet": "ARCHIVE"})
        self.assert_holds(self.sources[3:])

    def move(self, port, destination, study):
        """Whether movescu ends well, and what it says."""
        code, words = ask(port, "movescu", options=["-S", "-aec", "ARCHIVE", "-aem", destination, "-k", "0008,0052=STUDY", "-k", f"0020,000D={study}"])
        return code == 0, words

    def test_dcmqrscp_moves_to_ours(self):
        folder = self.new_folder()
        with Provider(folder) as provider, network_peers.dcmqrscp(destinations={"OURS": provider.port}) as peer:
            code, words = ask(peer.port, "storescu", *self.sources, options=["-aec", "ARCHIVE"])
            self.assertEqual(code, 0, words)
            for study, moved in zip(self.studies, (self.sources[:3], self.sources[3:])):
                done, words = self.move(peer.port, "OURS", study)
                self.assertTrue(done, words)
                self.assertIn("Received Final Move Response (Success)", words)
                self.assert_arrived(moved, folder.iterdir())
                for path in folder.iterdir():
                    path.unlink()

    def test_ours_moves_to_each_of_them(self):
        folder = self.new_folder()
        provider = self.provider(folder)
        code, words = provider.ask("storescu", *self.sources)
        self.assertEqual(code, 0, words)
        self.check_move(provider, "ARCHIVE")
        self.assert_holds(self.sources[3:])
        with network_peers.storescp("+B") as peer, Provider(folder, f"OTHER={peer.port}") as provider:
            self.check_move(provider, "OTHER")
            self.assert_arrived(self.sources[3:], peer.files())
        with network_peers.dcmqrscp() as peer, Provider(folder, f"ARCHIVE={peer.port}") as provider:
            self.check_move(provider, "ARCHIVE")
            self.assert_arrived(self.sources[3:], peer.files())

    def check_move(self, provider, title):
        done, words = self.move(provider.port, title, self.studies[1])
        self.assertTrue(done, words)
        self.assertIn("Received Final Move Response (Success)", words)
        # One for each object.
        self.assertEqual(words.count("(Pending)"), 3)

    def test_ours_tells_of_a_destination_that_refuses(self):
        folder = self.new_folder()
        with network_peers.dcmqrscp("--refuse") as peer, Provider(folder, f"ARCHIVE={peer.port}") as provider:
            self.assertEqual(provider.ask("storescu", *self.sources)[0], 0)
            done, words = self.move(provider.port, "ARCHIVE", self.studies[0])
        self.assertFalse(done, words)
        self.assertIn("Received Final Move Response (Failed: UnableToProcess)", words)


if __name__ == "__main__":
    unittest.main()
