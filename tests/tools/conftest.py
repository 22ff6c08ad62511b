import json
import os
import subprocess

import pytest


class Vsps:
    """Runs the program in a directory of its own."""

    def __init__(self, directory):
        self.directory = directory

    def path(self, name):
        return self.directory / name

    def put(self, name, content):
        self.path(name).write_bytes(content)
        return name

    def files(self):
        return sorted(os.listdir(self.directory))

    def run(self, *arguments, **options):
        command = [os.environ["VSPS"], *(str(a) for a in arguments)]
        result = subprocess.run(command, cwd=self.directory, capture_output=True, timeout=60, **options)
        result.stdout, result.stderr = result.stdout.decode(), result.stderr.decode()
        return result

    def run_without_reader(self, *arguments):
        """Exit status and standard error of a run whose standard output nobody reads."""
        nobody, output = os.pipe()
        os.close(nobody)
        try:
            command = [os.environ["VSPS"], *(str(a) for a in arguments)]
            result = subprocess.run(command, cwd=self.directory, stdout=output, stderr=subprocess.PIPE, timeout=60)
        finally:
            os.close(output)
        return result.returncode, result.stderr.decode()

    def ok(self, *arguments, **options):
        result = self.run(*arguments, **options)
        assert result.returncode == 0, result.stderr
        return result

    def json(self, *arguments):
        return json.loads(self.ok(*arguments, "--json").stdout)

    def fails(self, file, reason, *arguments, **options):
        """One line that names the file and the reason, and no file that was not there before."""
        before = {name: self.path(name).read_bytes() for name in self.files()}
        result = self.run(*arguments, **options)
        assert result.returncode == 1
        assert result.stdout == ""
        assert result.stderr.count("\n") == 1
        assert result.stderr.startswith(f"vsps: {file}: ")
        assert reason in result.stderr
        assert before == {name: self.path(name).read_bytes() for name in self.files()}


@pytest.fixture
def vsps(tmp_path):
    return Vsps(tmp_path)
